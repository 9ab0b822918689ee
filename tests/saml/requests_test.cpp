// The requests: what each setter does, and the text that is written, with clock and identifiers
// standing still.

#include <fstream>
#include <iterator>

#include "kestrelink/platform/Uuid.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"

#include "Support.h"

namespace kestrelink::testing {
namespace {

class Requests : public ::testing::Test {
 protected:
  Requests() {
    setUuidSourceForTesting([] { return std::string("0B1F6F0E-3A55-4F0C-9A4B-6E0E5B1C7D21"); });
  }
  ~Requests() override { setUuidSourceForTesting(nullptr); }

  const SAMLParserController& controller_ = SAMLParserController::sharedInstance();
  const StandingClock clock_{"2020-01-01T00:00:00Z"};
};

const std::string kSaml = " xmlns:saml=\"urn:oasis:names:tc:SAML:2.0:assertion\"";
const std::string kSamlp = " xmlns:samlp=\"urn:oasis:names:tc:SAML:2.0:protocol\"";
const std::string kUuid = "0B1F6F0E-3A55-4F0C-9A4B-6E0E5B1C7D21";
const std::string kStamp =
    " ID=\"_" + kUuid + "\" Version=\"2.0\" IssueInstant=\"2020-01-01T00:00:00Z\"";
const std::string kPolicy =
    "  <samlp:NameIdPolicy" + kSamlp +
    " Format=\"urn:oasis:names:tc:SAML:2.0:nameid-format:transient\" AllowCreate=\"false\"/>\n";

std::string issuer(const std::string& text) {
  return "  <saml:Issuer" + kSaml + ">" + text + "</saml:Issuer>\n";
}

// A response whose subject needs all that is kept of it: a default namespace, a prefixed attribute,
// text, a confirmation without data.
const char* const kResponse =
    "<Response><Assertion><Subject xmlns='urn:s' xmlns:x='urn:x' x:a='1'><NameID>n</NameID>"
    "<SubjectConfirmation Method='m'><SubjectConfirmationData/></SubjectConfirmation>"
    "<SubjectConfirmation Method='dropped'/></Subject></Assertion></Response>";
const std::string kSubject =
    "  <Subject xmlns=\"urn:s\" xmlns:x=\"urn:x\" x:a=\"1\">\n"
    "    <NameID xmlns=\"urn:s\" xmlns:x=\"urn:x\">n</NameID>\n"
    "    <SubjectConfirmation xmlns=\"urn:s\" xmlns:x=\"urn:x\" Method=\"m\">\n"
    "      <SubjectConfirmationData xmlns=\"urn:s\" xmlns:x=\"urn:x\"/>\n"
    "    </SubjectConfirmation>\n  </Subject>\n";

TEST_F(Requests, GoldenTexts) {
  const LogCapture log;
  const auto authn = controller_.newAuthNRequest("https://tv.example");
  const auto attributes = controller_.newAttributeQuery("HARBOUR");
  const auto authz = controller_.newAuthZQuery("https://tv.example/1?a&b", "HARBOUR");
  const auto logout = controller_.newLogoutRequest();
  const std::string bareAuthn =
      "<samlp:AuthnRequest" + kSamlp + kStamp + ">\n" + issuer("https://tv.example") + kPolicy;
  EXPECT_EQ(authn->xmlString(), bareAuthn + "</samlp:AuthnRequest>");
  EXPECT_EQ(logout->xmlString(), "<samlp:LogoutRequest" + kSamlp + " ID=\"" + kUuid +
                                     "\" Version=\"2.0\" IssueInstant=\"2020-01-01T00:00:00Z\"/>");

  // Everything set, in an order that is not the written one.
  authn->setSubjectFromResponse(kResponse);
  authn->setProviderName("P");
  authn->setForceAuthN(true);
  authn->setIsPassive(false);
  authz->addAction(SAMLAuthZDecisionQueryActionPlay);
  authz->requestElement()->setEvidence(SAMLEvidence::createElement());
  authz->requestElement()->setSubject(read(kResponse)->subject());
  authz->addAction("Record");
  attributes->addAttribute("B", {"1", "2"});
  attributes->setSubjectFromResponse(kResponse);
  attributes->addAttribute("A");
  logout->requestElement()->setSessionIndex("s");
  logout->setIssuer("https://tv.example");
  logout->setReason("bye");
  logout->setNotOnOrAfter(*SAMLDateFromString("9999-12-31T23:59:59Z"));

  const std::pair<std::shared_ptr<XMLWrapperDoc>, std::string> rows[] = {
      {authn, "<samlp:AuthnRequest" + kSamlp + kStamp +
                  " ProviderID=\"P\" ForceAuthn=\"true\" IsPassive=\"false\">\n" +
                  issuer("https://tv.example") + kSubject + kPolicy + "</samlp:AuthnRequest>"},
      {attributes, "<samlp:AttributeQuery" + kSamlp + kSaml + kStamp + ">\n" + issuer("HARBOUR") +
                       kSubject + "  <saml:Attribute" + kSaml + " Name=\"B\">\n" +
                       "    <saml:AttributeValue" + kSaml + ">1</saml:AttributeValue>\n" +
                       "    <saml:AttributeValue" + kSaml + ">2</saml:AttributeValue>\n" +
                       "  </saml:Attribute>\n  <saml:Attribute" + kSaml + " Name=\"A\"/>\n" +
                       "</samlp:AttributeQuery>"},
      {authz, "<samlp:AuthzDecisionQuery" + kSamlp + kStamp +
                  " Resource=\"https://tv.example/1?a&amp;b\">\n" + issuer("HARBOUR") + kSubject +
                  "  <Action>Play</Action>\n  <Action>Record</Action>\n  <saml:Element" + kSaml +
                  "/>\n</samlp:AuthzDecisionQuery>"},
      {logout, "<samlp:LogoutRequest" + kSamlp + " ID=\"" + kUuid +
                   "\" Version=\"2.0\" IssueInstant=\"2020-01-01T00:00:00Z\" Reason=\"bye\" "
                   "NotOnOrAfter=\"9999-12-31T23:59:59Z\">\n" +
                   issuer("https://tv.example") +
                   "  <SessionIndex>s</SessionIndex>\n</samlp:LogoutRequest>"},
  };
  for (const auto& [request, expected] : rows) {
    EXPECT_EQ(request->xmlString(), expected);
    EXPECT_EQ(request->xmlString(), expected) << "written twice";
    // Read again without a schema it is the same tree.
    const auto again = XMLWrapperDoc::initWithData(bytes(expected), nullptr);
    EXPECT_EQ(again->xmlString(), expected);
  }
  EXPECT_EQ(attributes->channelId(), "HARBOUR");
  EXPECT_EQ(authz->channelId(), "HARBOUR");
  EXPECT_EQ(logout->issuer(), "https://tv.example");
  EXPECT_EQ(logout->reason(), "bye");
  EXPECT_EQ(SAMLStringFromDate(logout->notOnOrAfter()), "9999-12-31T23:59:59Z");
}

TEST_F(Requests, SettersThatAddAndSettersThatReplace) {
  const auto count = [](const auto& request, std::string_view name) {
    return request->getElementsByTagName(name).size();
  };
  const auto first = SAMLSubject::createElement(), second = SAMLSubject::createElement();

  const auto authn = SAMLAuthNRequestElement::createElement();
  const auto policy = authn->nameIdPolicy();
  authn->setNameIdPolicy(SAMLNameIdPolicy::createElement());
  EXPECT_EQ(authn->nameIdPolicy(), policy);
  EXPECT_EQ(count(authn, "NameIdPolicy"), 2u);
  for (const auto& subject : {first, first, second}) authn->setSubject(subject);
  authn->setSubject(nullptr);
  EXPECT_EQ(count(authn, "Subject"), 2u);
  EXPECT_EQ(authn->subject(), first);
  for (const auto text : {"one", "two"}) authn->setIssuer(text);
  EXPECT_EQ(count(authn, "Issuer"), 1u);
  EXPECT_EQ(authn->issuer(), "two");
  EXPECT_EQ(authn->elements().front()->tagName(), "Issuer");
  authn->setProviderName("P");
  EXPECT_EQ(authn->providerName(), std::nullopt);
  authn->setAttributeWithName("IsPassive", "1");
  EXPECT_FALSE(authn->isPassive() || authn->forceAuthN());
  authn->setIsPassive(true);
  EXPECT_TRUE(authn->isPassive());
  authn->setConditions(SAMLConditions::createElement());
  authn->setScoping(SAMLScoping::createElement());
  authn->setScoping(SAMLScoping::createElement());
  EXPECT_EQ(count(authn, "Scoping"), 2u);
  EXPECT_TRUE(authn->conditions() && !authn->context() && !authn->signature());
  authn->setDestination("d");
  EXPECT_EQ(authn->destination(), "d");

  const auto query = SAMLAttributeQueryElement::createElement();
  for (const auto& subject : {first, second}) query->setSubject(subject);
  query->setSubject(nullptr);
  for (const auto text : {"one", "two"}) query->setChannelId(text);
  EXPECT_EQ(count(query, "Subject"), 1u);
  EXPECT_EQ(query->subject(), second);
  EXPECT_EQ(query->channelId(), "two");
  query->setAttributeWithName("Destination", "d");
  EXPECT_EQ(query->destination(), std::nullopt);
  query->setAttributeWithName("Decision", "d");
  EXPECT_EQ(query->destination(), "d");

  const auto decision = SAMLAuthZDecisionQueryElement::createElement();
  for (const auto& subject : {first, second}) decision->setSubject(subject);
  for (const auto action : {"Play", "Play"}) decision->addAction(action);
  for (const auto text : {"one", "two"}) decision->setChannelId(text);
  for (int n = 0; n < 2; ++n) decision->setEvidence(SAMLEvidence::createElement());
  decision->setEvidence(nullptr);
  EXPECT_EQ(count(decision, "Subject"), 2u);
  EXPECT_EQ(decision->actions().size(), 2u);
  EXPECT_EQ(count(decision, "Issuer") + count(decision, "Element"), 2u);
  decision->setElements({XMLWrapperElement::initWithTagName("Element")});
  decision->addAction("Play");
  EXPECT_EQ(decision->elements().back()->tagName(), "Element");

  const auto logout = SAMLLogoutRequestElement::createElement();
  for (const auto text : {"one", "two"}) logout->setSessionIndex(text);
  for (const auto text : {"one", "two"}) logout->setIssuer(text);
  EXPECT_EQ(logout->sessionIndex(), "two");
  EXPECT_EQ(logout->elements().size(), 2u);
  EXPECT_EQ(logout->elements().front()->tagName(), "Issuer");
  EXPECT_EQ(logout->nameId(), nullptr);
  logout->setNotOnOrAfter(
      SAMLDate(std::chrono::system_clock::time_point(std::chrono::milliseconds(1999))));
  EXPECT_EQ(SAMLStringFromDate(logout->notOnOrAfter()), "1970-01-01T00:00:01Z");
}

TEST_F(Requests, ScopingAndContext) {
  const auto scoping = root<SAMLScoping>(
      "<Scoping ProxyCount='2'><IDPList><IDPEntry ProviderID='p' Name='n' Loc='l'/><IDPEntry/>"
      "<GetComplete>g</GetComplete></IDPList></Scoping>");
  EXPECT_EQ(scoping->proxyCount(), 2.0);
  EXPECT_EQ(scoping->getComplete(), "g");
  ASSERT_EQ(scoping->idpList().size(), 2u);
  EXPECT_EQ(scoping->idpList()[0]->providerId(), "p");
  EXPECT_EQ(scoping->idpList()[0]->name(), "n");
  EXPECT_EQ(scoping->idpList()[0]->loc(), "l");
  const auto empty = SAMLScoping::createElement();
  EXPECT_TRUE(!empty->proxyCount() && !empty->getComplete() && empty->idpList().empty());
  for (const auto text : {"a", "a"}) empty->addRequesterId(text);
  EXPECT_EQ(empty->requesterIds(), (std::vector<std::string>{"a", "a"}));
  EXPECT_EQ(empty->xmlString(), "<samlp:Scoping" + kSamlp +
                                    ">\n  <RequesterID>a</RequesterID>\n  "
                                    "<RequesterID>a</RequesterID>\n</samlp:Scoping>");
  const auto context = root<SAMLRequestedAuthNContext>(
      "<RequestedAuthnContext Comparison='exact'><AuthnContextClassRef>c</AuthnContextClassRef>"
      "</RequestedAuthnContext>");
  EXPECT_EQ(context->comparison(), "exact");
  EXPECT_EQ(context->classRef(), std::nullopt);
  context->addChildElement(XMLWrapperElement::initWithTagName("saml:AuthnContextDeclRef"));
  context->elements().back()->setTextContent("d");
  EXPECT_EQ(context->declRef(), "d");
}

TEST_F(Requests, WhateverTextIsSetTheMessageCanBeRead) {
  const LogCapture log;
  const std::pair<std::string, std::string> rows[] = {
      {"<a>&\"'", "<a>&\"'"},
      {"one\ntwo\tthree\rfour", "one\ntwo\tthree\rfour"},
      {"\xC3\xA9\xF0\x9F\x93\xBA", "\xC3\xA9\xF0\x9F\x93\xBA"},
      {std::string("a\0b\x01", 4),
       "a\xEF\xBF\xBD"
       "b\xEF\xBF\xBD"},
      {"a\xEF\xBF\xBF!", "a\xEF\xBF\xBD!"},
      {"a\xC3", "a\xEF\xBF\xBD"},
      {"]]>", "]]>"},
      {"&undefined;", "&undefined;"},
  };
  for (const auto& [text, expected] : rows) {
    const auto request = controller_.newAuthNRequest(text);
    request->setProviderName(text);
    std::optional<ErrorInfo> error;
    const auto again =
        SAMLAuthNRequest::initWithData(bytes(*request->xmlString()), nullptr, &error);
    ASSERT_TRUE(again && again->requestElement()) << text;
    EXPECT_EQ(again->issuer(), expected);
    EXPECT_EQ(again->requestElement()->attributeWithName("ProviderID")->value(), expected);
  }
  EXPECT_EQ(
      LogCapture::lines(),
      std::vector<std::string>(3, "What XML forbids in a text was written as U+FFFD (2 times)"));

  const auto element = XMLWrapperElement::initWithTagName("r");
  element->setAttributeWithName("a b", "1");
  element->setNamespace(std::make_shared<XMLWrapperNamespace>("x y", "urn:x"));
  element->addChildElement(XMLWrapperElement::initWithTagName("<c>"));
  element->addChildElement(XMLWrapperElement::initWithTagName(""));
  element->addChildElement(XMLWrapperElement::initWithTagName("caf\xE9"));
  element->addChildElement(
      XMLWrapperElement::initWithTagName("\u0133"));  // since the fifth edition
  EXPECT_EQ(element->xmlString(), "<r>\n  <\u0133/>\n</r>");
  EXPECT_EQ(LogCapture::lines().back(),
            "An element whose tag name is no XML name cannot be written (3 times)");
}

// Each document class over its own request, and over a message that is none.
TEST_F(Requests, DocumentsFromBytes) {
  const SharedBytes own[] = {bytes(*controller_.newAuthNRequest("I")->xmlString()),
                             bytes(*controller_.newAttributeQuery("I")->xmlString()),
                             bytes(*controller_.newAuthZQuery("u", "I")->xmlString()),
                             bytes(*controller_.newLogoutRequest()->xmlString())};
  const auto other = bytes("<Response/>");
  const auto check = [&](auto make, const SharedBytes& request, bool nullOnMismatch) {
    std::optional<ErrorInfo> error;
    ASSERT_TRUE(make(request, &error)->requestElement());
    EXPECT_EQ(text(error), "none");
    const auto mismatch = make(other, &error);
    EXPECT_EQ(text(error), "SAMLParserErrorDomain 102");
    EXPECT_EQ(error->info.at("recievedClass"), "SAMLResponseElement");
    EXPECT_EQ(mismatch == nullptr, nullOnMismatch);
    EXPECT_EQ(make(other, nullptr)->requestElement(), nullptr);
    EXPECT_EQ(make(bytes(""), nullptr), nullptr);
  };
  const auto from = [](auto initWithData) {
    return [initWithData](const SharedBytes& data, ErrorOut error) {
      return initWithData(data, nullptr, error);
    };
  };
  check(from(&SAMLAuthNRequest::initWithData), own[0], false);
  check(from(&SAMLAttributeQuery::initWithData), own[1], true);
  check(from(&SAMLAuthZDecisionQuery::initWithData), own[2], false);
  check(from(&SAMLLogoutRequest::initWithData), own[3], false);

  const auto none = SAMLAuthNRequest::initWithElement(nullptr, nullptr);
  none->setIssuer("I");
  none->setSubjectFromResponse(kResponse);
  EXPECT_EQ(none->issuer(), std::nullopt);
  EXPECT_EQ(none->xmlString(), std::nullopt);
}

// With which schema a response is read for its subject, and what yields none.
TEST_F(Requests, SubjectsFromResponses) {
  std::ifstream file(SOURCE_DIR "/examples/answer.xml");
  const std::string valid{std::istreambuf_iterator<char>(file), {}};
  const LogCapture log;
  const auto authn = controller_.newAuthNRequest("I");
  const auto attributes = controller_.newAttributeQuery("I");
  const auto authz = controller_.newAuthZQuery("u", "I");
  for (const auto useless : {"", "<Response/>", "\xFF", "<LogoutResponse/>"}) {
    authn->setSubjectFromResponse(useless);
  }
  EXPECT_EQ(authn->requestElement()->subject(), nullptr);
  for (const std::string& response : {std::string(kResponse), valid, valid}) {
    authn->setSubjectFromResponse(response);
    attributes->setSubjectFromResponse(response);
    authz->setSubjectFromResponse(response);
  }
  // Only the decision query was made with a schema to read by: kResponse is not valid.
  EXPECT_EQ(authn->requestElement()->getElementsByTagName("Subject").size(), 3u);
  EXPECT_EQ(attributes->requestElement()->getElementsByTagName("Subject").size(), 1u);
  EXPECT_EQ(authz->requestElement()->getElementsByTagName("Subject").size(), 2u);
  EXPECT_EQ(attributes->requestElement()->subject()->elements()[0]->textContent(), "t-58f20c7be1");
}

// What docs/quirks.md tells a client to do for a provider that validates what it is sent.
TEST_F(Requests, TheWaysRoundTheQuirksAreValid) {
  const auto element = [](std::string_view tagName, std::string_view text) {
    auto made = XMLWrapperElement::initWithTagName(tagName);
    made->setTextContent(std::string(text));
    made->setNamespace(SAMLAssertionNamespace());
    return made;
  };
  const auto authn = controller_.newAuthNRequest("I");
  authn->requestElement()->nameIdPolicy()->setTagName("NameIDPolicy");
  authn->requestElement()->setChildElementSequence({{"Issuer", "NameIDPolicy"}});
  authn->requestElement()->setAttributeWithName("ProviderName", "P");

  const auto authz = controller_.newAuthZQuery("https://tv.example/1", "C");
  authz->requestElement()->setSubject(SAMLSubject::createElement());
  const auto subject = authz->requestElement()->subject();
  subject->setChildElementSequence(std::nullopt);
  subject->addChildElement(element("NameID", "n"));
  authz->addAction("Play");
  const auto action = authz->requestElement()->actions()[0];
  action->setNamespace(SAMLAssertionNamespace());
  action->setAttributeWithName("Namespace", "urn:oasis:names:tc:SAML:1.0:action:rwedc");

  const auto logout = controller_.newLogoutRequest();
  logout->requestElement()->setAttributeWithName("ID", "_1");
  logout->requestElement()->setSessionIndex("s");
  logout->requestElement()
      ->firstElementByTagName("SessionIndex")
      ->setNamespace(SAMLProtocolNamespace());
  logout->requestElement()->addChildElement(element("NameID", "n"));
  logout->requestElement()->setChildElementSequence({{"NameID", "SessionIndex"}});

  for (const auto& request : std::vector<std::shared_ptr<XMLWrapperDoc>>{authn, authz, logout}) {
    std::optional<ErrorInfo> error;
    EXPECT_TRUE(
        XMLWrapperDoc::initWithData(bytes(*request->xmlString()), controller_.schema(), &error))
        << *request->xmlString() << (error ? error->info.begin()->second : "");
  }
}

TEST(RequestIdentifiers, AreFreshAndOfTheirShape) {
  const auto& controller = SAMLParserController::sharedInstance();
  const auto first = controller.newAuthNRequest("I")->requestElement()->identifier().value();
  const auto second = controller.newAuthNRequest("I")->requestElement()->identifier().value();
  const auto logout = controller.newLogoutRequest()->requestElement()->identifier().value();
  EXPECT_NE(first, second);
  EXPECT_EQ(first.substr(0, 1), "_");
  for (const std::string& uuid : {first.substr(1), second.substr(1), logout}) {
    ASSERT_EQ(uuid.size(), 36u);
    EXPECT_EQ(uuid.find_first_not_of("0123456789ABCDEF-"), std::string::npos);
    EXPECT_EQ(uuid[14], '4') << "version";
    for (const std::size_t at : {8u, 13u, 18u, 23u}) EXPECT_EQ(uuid[at], '-');
  }
}

}  // namespace
}  // namespace kestrelink::testing
