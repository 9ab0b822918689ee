// Requests: what each setter does, what is written, and the standard's form of it, with the clock
// and the identifiers standing still.

#include <map>
#include <regex>

#include "kestrelink/platform/Uuid.h"
#include "kestrelink/standard/StandardForms.h"

#include "tests/support/ElementTable.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

const char* const kHard =
    "<Response><Assertion><Subject xmlns='urn:s' xmlns:x='urn:x' x:a='1'><NameID>n</NameID>"
    "<SubjectConfirmation Method='m'><SubjectConfirmationData/></SubjectConfirmation>"
    "<SubjectConfirmation Method='dropped'/></Subject></Assertion></Response>";
const char* const kFull =
    "<Subject xmlns='urn:oasis:names:tc:SAML:2.0:assertion'><NameID "
    "xsi:type='NameIDType'>n</NameID>"
    "<SubjectConfirmation Method='urn:m'><NameID>m</NameID></SubjectConfirmation>"
    "<SubjectConfirmation Method='urn:m'><SubjectConfirmationData xml:lang='en' x:a='1' "
    "Address='a'><y xmlns='' x:b='2'/></SubjectConfirmationData></SubjectConfirmation></Subject>";

using Text = const std::string&;
using Setters = std::map<std::string, std::function<void(Text value)>>;

const SAMLParserController& controller() { return SAMLParserController::sharedInstance(); }

std::string sampleOr(Text value) {
  return value == "{hard}"     ? kHard
         : value == "{sample}" ? file("tests/fixtures/answer.xml")
                               : value;
}

std::string responseIn(Text value) {
  if (value == "{hard}") return kHard;
  return "<Response xmlns:x='urn:x' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
         "xmlns:saml='urn:oasis:names:tc:SAML:2.0:assertion'><Assertion>" +
         (value == "{full}" ? kFull : value) + "</Assertion></Response>";
}

std::shared_ptr<SAMLSubject> subjectIn(Text value) {
  return value.empty() ? nullptr : read(responseIn(value))->subject();
}

template <class Request>
Setters settersForSubjects(Request& request) {
  auto& e = *request.requestElement();
  return {{"subject", [&](Text value) { e.setSubject(subjectIn(value)); }},
          {"same subject", [&](Text) { e.setSubject(e.subject()); }},
          {"from", [&](Text value) { request.setSubjectFromResponse(sampleOr(value)); }}};
}

Setters settersOf(SAMLAuthNRequest& request) {
  auto& e = *request.requestElement();
  Setters all = settersForSubjects(request);
  all.merge(
      Setters{{"issuer", [&](Text value) { request.setIssuer(value); }},
              {"provider", [&](Text value) { request.setProviderName(value); }},
              {"passive", [&](Text value) { request.setIsPassive(value == "true"); }},
              {"force", [&](Text value) { request.setForceAuthN(value == "true"); }},
              {"acs", [&](Text value) { standard::setAssertionConsumerService(request, value); }},
              {"own destination", [&](Text value) { e.setDestination(value); }},
              {"policy", [&](Text) { e.setNameIdPolicy(SAMLNameIdPolicy::createElement()); }},
              {"conditions", [&](Text) { e.setConditions(SAMLConditions::createElement()); }},
              {"scoping", [&](Text) { e.setScoping(SAMLScoping::createElement()); }},
              {"requester", [&](Text value) {
                 std::dynamic_pointer_cast<SAMLScoping>(e.elements().back())->addRequesterId(value);
               }}});
  return all;
}

Setters settersOf(SAMLAttributeQuery& query) {
  Setters all = settersForSubjects(query);
  all["channel"] = [&](Text value) { query.requestElement()->setChannelId(value); };
  all["attribute"] = [&](Text value) {
    const auto words = split(value, " ");
    if (words.size() == 1) query.addAttribute(value);
    if (words.size() == 2) query.addAttribute(words[0], split(words[1], ","));
  };
  return all;
}

Setters settersOf(SAMLAuthZDecisionQuery& query) {
  auto& e = *query.requestElement();
  Setters all = settersForSubjects(query);
  all["channel"] = [&](Text value) { e.setChannelId(value); };
  all["own destination"] = [&](Text value) { e.setDestination(value); };
  all["evidence"] = [&](Text value) {
    e.setEvidence(value.empty() ? nullptr : SAMLEvidence::createElement());
  };
  all["action"] = [&](Text value) {
    const auto words = split(value, " ");
    query.addAction(words[0]);
    if (words.size() == 2) e.actions().back()->setAttributeWithName("Namespace", words[1]);
  };
  return all;
}

Setters settersOf(SAMLLogoutRequest& request) {
  auto& e = *request.requestElement();
  return {{"issuer", [&](Text value) { request.setIssuer(value); }},
          {"reason", [&](Text value) { request.setReason(value); }},
          {"session", [&](Text value) { e.setSessionIndex(value); }},
          {"own destination", [&](Text value) { e.setDestination(value); }},
          {"uuid", [&](Text value) { e.setAttributeWithName("ID", value); }},
          {"nameId", [&](Text value) { e.addChildElement(standard::newNameId(value)); }},
          {"nameIdFrom",
           [&](Text value) { EXPECT_TRUE(standard::setNameIdFrom(request, *subjectIn(value))); }},
          {"until", [&](Text value) {
             const std::chrono::sys_days late(std::chrono::year(12026) / 1 / 1);
             request.setNotOnOrAfter(value == "12026" ? SAMLDate(late) : SAMLDateFromString(value));
           }}};
}

std::string getters(const XMLWrapperElement& element) {
  for (const ElementRow& row : elementTable()) {
    if (row.elementClass == &element.dynamicClass()) return row.read(element);
  }
  return "no such class";
}

// Those of a request, and of its scoping, which looks up elements by their class too.
std::string allGetters(const XMLWrapperElement& request) {
  const auto scoping = request.firstElementByTagName("Scoping");
  return getters(request) + (scoping ? getters(*scoping) : "");
}

// It stays as it is when it is made again; a request that has none stays as it was.
template <class Request>
std::string standardForm(Request& request) {
  const auto own = request.requestElement();
  const auto attributes = own->attributes();
  const auto elements = own->elements();
  const standard::StandardForm made = standard::toStandardForm(request);
  EXPECT_EQ(own->attributes(), attributes);
  EXPECT_EQ(own->elements(), elements);
  if (made != standard::StandardForm::made) {
    EXPECT_TRUE(request.requestElement() == own && request.documentElement() == own);
    return standard::reasonOf(made);
  }
  EXPECT_EQ(request.requestElement(), request.documentElement());
  const std::string text = shown(request.xmlString());
  if (text.find("\uFFFD") == text.npos && text.find("&#xFFFD;") == text.npos) {
    EXPECT_EQ(allGetters(*request.requestElement()), allGetters(*read(text)->documentElement()));
  }
  const auto valid = XMLWrapperDoc::initWithData(bytes(text), controller().schema());
  EXPECT_EQ(standard::toStandardForm(request), standard::StandardForm::made);
  EXPECT_EQ(shown(request.xmlString()), text);
  return (valid ? "" : "(not valid) ") + text;
}

template <class Request>
std::shared_ptr<Request> filled(std::shared_ptr<Request> request,
                                const std::vector<std::string>& set) {
  Setters setters = settersOf(*request);
  auto& e = *request->requestElement();
  setters["child"] = [&](Text value) { e.addChildElement(standard::elementFromText(value)); };
  setters["destination"] = [&](Text value) { standard::setDestination(*request, value); };
  for (std::size_t each = 1; each < set.size(); ++each) {
    const std::size_t at = set[each].find('=');
    setters.at(set[each].substr(0, at))(set[each].substr(at + 1));
  }
  return request;
}

// Of two requests that were filled in alike.
template <class Request>
std::string described(const std::shared_ptr<Request>& request,
                      const std::shared_ptr<Request>& same) {
  std::string all = shown(request->requestElement()->elements());
  const std::string text = shown(request->xmlString());
  EXPECT_EQ(shown(request->xmlString()), text) << "written twice";
  const std::string own = getters(*request->requestElement());
  const std::string again = getters(*read(text)->documentElement());
  all += "\nread:" + own + (own == again ? "" : "\nread again:" + again) + "\n" + text;
  return all + "\nstandard: " + standardForm(*same);
}

class Requests : public ::testing::Test {
 protected:
  Requests() {
    setUuidSourceForTesting([] { return std::string("0B1F6F0E-3A55-4F0C-9A4B-6E0E5B1C7D21"); });
  }
  ~Requests() override { setUuidSourceForTesting(nullptr); }

  const SAMLParserController& controller_ = controller();
  const StandingClock clock_{"2020-01-01T00:00:00Z"};
};

TEST_F(Requests, GoldenTexts) {
  expectCases("tests/golden/cases/requests.txt", [&](const std::string& line) {
    const LogCapture log;
    const auto set = split(line, " | ");
    const std::size_t blank = std::min(set[0].find(' '), set[0].size() - 1);
    const std::string kind = set[0].substr(0, set[0].find(' ')), with = set[0].substr(blank + 1);
    const auto of = [&](const auto& make) {
      return described(filled(make(), set), filled(make(), set));
    };
    std::string all = kind == "authn" ? of([&] { return controller_.newAuthNRequest(with); })
                      : kind == "attributes"
                          ? of([&] { return controller_.newAttributeQuery(with); })
                      : kind == "authz" ? of([&] { return controller_.newAuthZQuery(with, "C"); })
                                        : of([&] { return controller_.newLogoutRequest(); });
    for (const std::string& entry : LogCapture::lines()) {
      if (!entry.starts_with("libxml2")) all += "\nlog: " + entry;
    }
    return all;
  });
  const auto query = controller_.newAuthZQuery(std::string_view(), "C");
  const auto none = query->requestElement();
  EXPECT_TRUE(none->attributeWithName("Resource") && !none->resource());
  EXPECT_EQ(standard::toStandardForm(*query), standard::StandardForm::noResource);
  EXPECT_EQ(standard::toStandardForm(*SAMLAuthNRequest::initWithElement(nullptr, nullptr)),
            standard::StandardForm::noRequest);
  EXPECT_STRNE(standard::reasonOf(standard::StandardForm::noRequest), "");
  EXPECT_STRNE(standard::reasonOf(standard::StandardForm::made), "");

  const auto logout = controller_.newLogoutRequest();
  logout->setIssuer("I");
  logout->setReason("R");
  EXPECT_EQ(shown(controller_.newAttributeQuery("A")->channelId(),
                  controller_.newAuthZQuery("urn:r", "Z")->channelId(), logout->issuer(),
                  logout->reason(), logout->notOnOrAfter()),
            "A Z I R -");
}

// What was set after a standard form was made is in the next.
TEST_F(Requests, TheirStandardFormCanBeMadeAgain) {
  const auto authn = controller_.newAuthNRequest("I");
  authn->setProviderName("P");
  standardForm(*authn);
  authn->setProviderName("Q");
  EXPECT_NE(standardForm(*authn).find(" ProviderName=\"Q\""), std::string::npos);
}

TEST(Elements, NamesThatAreNoneAreNotWritten) {
  const LogCapture log;
  const auto element = XMLWrapperElement::initWithTagName("r");
  element->setAttributeWithName("a b", "1");
  element->setNamespace(std::make_shared<XMLWrapperNamespace>("x y", "urn:x"));
  for (const auto name : {"<c>", "", "caf\xE9", "\u0133"}) {  // the last since the fifth edition
    element->addChildElement(XMLWrapperElement::initWithTagName(name));
  }
  EXPECT_EQ(element->xmlString(), "<r>\n  <\u0133/>\n</r>");
  EXPECT_EQ(LogCapture::lines().back(),
            "An element whose tag name is no XML name cannot be written (3 times)");
}

TEST_F(Requests, GoldenSetters) {
  const auto scoping = SAMLScoping::createElement();
  for (const auto id : {"a", "a"}) scoping->addRequesterId(id);
  const auto attribute = SAMLAttribute::createElement();
  for (const auto name : {"first", "HouseholdID"}) attribute->setName(name);
  for (const auto value : {"5", "6"}) attribute->addAttributeValue(value);
  // The references of an advice stay empty.
  const auto advice = SAMLAdvice::createElement();
  advice->setAssertion(SAMLAssertion::createElement());
  advice->setAssertionIDRef("_a");
  advice->setAssertionURIRef("urn:a");
  const auto texts = shown(scoping->xmlString(), attribute->xmlString(), advice->xmlString());
  expectKept("tests/golden/cases/setters.xml", texts + "\n");
}

// Each document class over its own request, and over a message that is none.
TEST_F(Requests, DocumentsFromBytes) {
  const auto other = bytes("<Response/>");
  const auto check = [&](auto initWithData, XMLWrapperDoc& own, bool nullOnMismatch) {
    std::optional<ErrorInfo> error;
    ASSERT_TRUE(initWithData(bytes(*own.xmlString()), nullptr, &error)->requestElement());
    EXPECT_EQ(text(error), "none");
    EXPECT_EQ(initWithData(other, nullptr, &error) == nullptr, nullOnMismatch);
    EXPECT_EQ(text(error), "SAMLParserErrorDomain 102");
    EXPECT_EQ(error->info.at("recievedClass"), "SAMLResponseElement");
    EXPECT_EQ(initWithData(other, nullptr, nullptr)->requestElement(), nullptr);
    EXPECT_EQ(initWithData(bytes(""), nullptr, nullptr), nullptr);
  };
  check(&SAMLAuthNRequest::initWithData, *controller_.newAuthNRequest("I"), false);
  check(&SAMLAttributeQuery::initWithData, *controller_.newAttributeQuery("I"), true);
  check(&SAMLAuthZDecisionQuery::initWithData, *controller_.newAuthZQuery("u", "I"), false);
  check(&SAMLLogoutRequest::initWithData, *controller_.newLogoutRequest(), false);

  const auto none = SAMLAuthNRequest::initWithElement(nullptr, nullptr);
  none->setIssuer("I");
  none->setSubjectFromResponse(kHard);
  standard::setDestination(*none, "d");
  standard::setAssertionConsumerService(*none, "u");
  EXPECT_EQ(none->issuer(), std::nullopt);
  EXPECT_EQ(none->xmlString(), std::nullopt);
}

TEST(RequestIdentifiers, AreFreshAndOfTheirShape) {
  const auto first = controller().newAuthNRequest("I")->requestElement()->identifier().value();
  const auto second = controller().newAuthNRequest("I")->requestElement()->identifier().value();
  const auto logout = controller().newLogoutRequest()->requestElement()->identifier().value();
  EXPECT_NE(first, second);
  const std::regex uuid("_[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
  for (const std::string& each : {first, second, "_" + logout}) {
    EXPECT_TRUE(std::regex_match(each, uuid)) << each;
  }
}

}  // namespace
}  // namespace kestrelink::testing
