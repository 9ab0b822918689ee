#include "tests/stress/Operations.h"

#include <fstream>
#include <iterator>
#include <memory>

#include "kestrelink/platform/Clock.h"
#include "kestrelink/platform/Uuid.h"
#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/saml/elements/SAMLDateText.h"

#include "tests/stress/Faults.h"

namespace stress {
namespace {

using namespace kestrelink;

SAMLParserController& controller() { return SAMLParserController::sharedInstance(); }
SharedBytes bytesOf(std::string_view text) { return std::make_shared<const std::string>(text); }

Answer absent(const std::optional<ErrorInfo>& error) {
  return {true, error ? error->domain + " " + std::to_string(error->code) : ""};
}

void say(std::string& all, const std::optional<std::string>& text) {
  all += text ? "[" + *text + "]" : "-";
}

// Every element with its text, attributes and namespaces.
std::string treeText(const XMLWrapperElement& element) {
  std::string all;
  say(all, element.tagName());
  say(all, element.textContent());
  for (const auto& [name, attribute] : element.attributes()) {
    say(all, name);
    say(all, attribute->value());
  }
  for (std::size_t position = 0; position < element.namespaces().size(); ++position) {
    say(all, element.namespaces().at(position)->prefix());
    say(all, element.namespaces().at(position)->href());
  }
  for (const auto& child : element.elements()) all += "(" + treeText(*child) + ")";
  return all;
}

std::string everyAccessor(const SAMLResponse& response) {
  std::string all;
  const auto assertions = response.assertions();
  all += assertions ? std::to_string(assertions->size()) : "-";
  for (const auto& [name, values] : response.attributes()) {
    say(all, name);
    for (const std::string& value : values) say(all, value);
  }
  const auto codes = response.attributeValuesForName(SAMLAttributePropertyNamePostalCodes);
  all += codes ? std::to_string(codes->size()) : "-";
  say(all, response.userName());
  say(all, response.selectedProvider());
  const auto subject = response.subject();
  for (const auto& confirmation : subject->subjectConfirmations()) {
    say(all, confirmation->recipient());
    say(all, SAMLStringFromDate(confirmation->notOnOrAfter()));
  }
  all += response.hasValidAuthentication() ? "valid" : "-";
  say(all, SAMLStringFromDate(response.authenticationTTL()));
  say(all, response.authenticationSessionId());
  all += response.assertionMeetsConditions() && response.isValid() ? "met" : "-";
  for (const std::string& code : response.statusCodes()) say(all, code);
  say(all, response.primaryStatusCode());
  all += std::to_string(response.expectedAction());
  say(all, response.authorizationStatusForResource("https://tv.example/1"));
  all += assertions->front()->isValidForRequestor("https://signin.harbour-tv.example") ? "1" : "0";
  return all;
}

Answer answerOf(const std::shared_ptr<SAMLResponse>& response,
                const std::optional<ErrorInfo>& error) {
  if (!response) return absent(error);
  return {false, treeText(*response->documentElement()) + everyAccessor(*response)};
}

Answer readWithSchema() {
  std::optional<ErrorInfo> error;
  const auto read = [&error] {
    const FaultWindow faults;
    return controller().parseResponse(sample(), &error);
  };
  return answerOf(read(), error);
}

Answer readCached() {
  std::optional<ErrorInfo> error;
  const auto read = [&error] {
    const FaultWindow faults;
    return SAMLResponse::initWithData(bytesOf(sample()), nullptr, &error);
  };
  return answerOf(read(), error);
}

// Well-formed and not valid: must be refused, whatever fails.
Answer refuse() {
  std::optional<ErrorInfo> error;
  const auto read = [&error] {
    const FaultWindow faults;
    return controller().parseResponse(sampleWithStranger(), &error);
  };
  return answerOf(read(), error);
}

Answer query() {
  const auto response = SAMLResponse::initWithData(bytesOf(sample()), nullptr);
  const FaultWindow faults;
  return {false, everyAccessor(*response)};
}

Answer xpath() {
  const auto response = SAMLResponse::initWithData(bytesOf(sample()), nullptr);
  std::optional<ErrorInfo> error;
  const FaultWindow faults;
  const auto found = response->getResultsByXpathQuery(
      "//saml:Attribute[starts-with(@Name, 'Postal')]/* | //@Recipient | //saml:*[text()='sv']",
      &error);
  if (!found) return absent(error);
  std::string all;
  for (const auto& element : *found) all += "(" + treeText(*element) + ")";
  return {false, all};
}

// Also of an element that was made in memory, which has an empty node.
Answer xpathOfElements() {
  const auto response = SAMLResponse::initWithData(bytesOf(sample()), nullptr);
  const auto made = XMLWrapperElement::initWithTagName("Made");
  made->setQuery(response->query());
  const FaultWindow faults;
  const auto status = response->responseElement()->firstResultByXpathQuery("samlp:Status/*");
  const auto self = made->getResultsByXpathQuery("self::Made");
  if (!status || !self) return absent(std::nullopt);
  return {false, treeText(*status) + std::to_string(self->size())};
}

Answer textOrAbsent(const std::optional<std::string>& text, const std::optional<ErrorInfo>& error) {
  return text ? Answer{false, *text} : absent(error);
}

Answer authnRequest() {
  std::optional<ErrorInfo> error;
  const FaultWindow faults;
  const auto request = controller().newAuthNRequest("https://signin.harbour-tv.example", &error);
  request->setIsPassive(true);
  request->setForceAuthN(false);
  request->setProviderName("Harbour & Söhne");
  request->requestElement()->setDestination("https://idp.example/sso?a=1&b=<2>");
  request->requestElement()->setScoping(SAMLScoping::createElement(&error));
  request->requestElement()->scoping()->addRequesterId("line\nbreak");
  request->setSubjectFromResponse(sample());
  return textOrAbsent(request->xmlString(&error), error);
}

Answer attributeQuery() {
  std::optional<ErrorInfo> error;
  const FaultWindow faults;
  const auto request = controller().newAttributeQuery("HARBOUR", &error);
  request->setSubjectFromResponse(sample());
  request->addAttribute("HouseholdID");
  request->addAttribute("PostalCodes", {"55802", "55804"});
  return textOrAbsent(request->xmlString(&error), error);
}

Answer decisionQuery() {
  std::optional<ErrorInfo> error;
  const FaultWindow faults;
  const auto request = controller().newAuthZQuery("https://tv.example/live", "HARBOUR", &error);
  request->setSubjectFromResponse(sample());
  request->addAction(SAMLAuthZDecisionQueryActionPlay);
  return textOrAbsent(request->xmlString(&error), error);
}

Answer logoutRequest() {
  std::optional<ErrorInfo> error;
  const FaultWindow faults;
  const auto request = controller().newLogoutRequest(&error);
  request->setIssuer("https://signin.harbour-tv.example");
  request->setReason("urn:oasis:names:tc:SAML:2.0:logout:user");
  request->setNotOnOrAfter(currentTime());
  request->requestElement()->setSessionIndex("s-1");
  return textOrAbsent(request->xmlString(&error), error);
}

// A text long enough that libxml2's buffer has to grow, with a character that XML forbids, and an
// attribute with a namespace of its own.
Answer writeElement() {
  const auto element = SAMLResponse::initWithData(bytesOf(sample()), nullptr)->documentElement();
  const auto attribute = std::make_shared<XMLWrapperAttribute>();
  attribute->setName("hint");
  attribute->setValue("a");
  attribute->setNs(std::make_shared<XMLWrapperNamespace>("h", "urn:hint"));
  const_cast<XMLWrapperElement::AttributeMap&>(element->attributes())
      .emplace_back("hint", attribute);
  element->setTextContent(std::string(20000, 'x') + '\x01');
  std::optional<ErrorInfo> error;
  const FaultWindow faults;
  return textOrAbsent(element->xmlString(&error), error);
}

const bool fixedSurroundings = [] {
  setClockForTesting(SAMLDateFromString("2026-01-15T20:16:00Z")->seconds());
  setUuidSourceForTesting([] { return std::string("C6E4D1C0-0B2B-4F0E-9D54-2E7C3A1B5F60"); });
  return true;
}();

constexpr std::string_view kNotParsed = "XMLWrapperErrorDomain 200";
constexpr std::string_view kNotValidated = "XMLWrapperErrorDomain 100";
constexpr std::string_view kNotWritten = "XMLWrapperErrorDomain 101";

}  // namespace

const std::string& sample() {
  static const std::string text = [] {
    std::ifstream file(SAMPLE);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  return text;
}

const std::string& sampleWithStranger() {
  static const std::string text = [] {
    std::string changed = sample();
    return changed.insert(changed.find("<saml:Subject>"), "<saml:Stranger/>");
  }();
  return text;
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all = {
      {"read", &readWithSchema, {kNotParsed, kNotValidated}, 29},
      {"refuse", &refuse, {kNotParsed, kNotValidated}, 59},
      {"read-without-schema", &readCached, {kNotParsed}},
      {"query", &query, {}},
      {"xpath", &xpath, {"XMLWrapperErrorDomain 201", "XMLWrapperErrorDomain 300"}},
      {"xpath-of-elements", &xpathOfElements, {""}},
      {"authn-request", &authnRequest, {kNotWritten}},
      {"attribute-query", &attributeQuery, {kNotWritten}},
      {"decision-query", &decisionQuery, {kNotWritten}, 61},
      {"logout-request", &logoutRequest, {kNotWritten}},
      {"write-element", &writeElement, {kNotWritten}},
  };
  return all;
}

}  // namespace stress
