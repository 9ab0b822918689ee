// The requests: what each setter does, and the text that is written, with clock and identifiers
// standing still.

#include "kestrelink/platform/Uuid.h"

#include "tests/support/Support.h"

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

// A response whose subject needs all that is kept of it: a default namespace, a prefixed attribute,
// text, a confirmation without data.
const char* const kResponse =
    "<Response><Assertion><Subject xmlns='urn:s' xmlns:x='urn:x' x:a='1'><NameID>n</NameID>"
    "<SubjectConfirmation Method='m'><SubjectConfirmationData/></SubjectConfirmation>"
    "<SubjectConfirmation Method='dropped'/></Subject></Assertion></Response>";

TEST_F(Requests, GoldenTexts) {
  const LogCapture log;
  const auto authn = controller_.newAuthNRequest("https://tv.example");
  const auto attributes = controller_.newAttributeQuery("HARBOUR");
  const auto authz = controller_.newAuthZQuery("https://tv.example/1?a&b", "HARBOUR");
  const auto logout = controller_.newLogoutRequest();
  std::map<std::string, std::string> texts = {{"authn-bare.xml", *authn->xmlString() + "\n"},
                                              {"logout-bare.xml", *logout->xmlString() + "\n"}};

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
      {authn, "authn.xml"},
      {attributes, "attributes.xml"},
      {authz, "authz.xml"},
      {logout, "logout.xml"}};
  for (const auto& [request, name] : rows) {
    const std::string& text = texts[name] = *request->xmlString() + "\n";
    EXPECT_EQ(*request->xmlString() + "\n", text) << "written twice";
    // Read again without a schema it is the same tree.
    EXPECT_EQ(*XMLWrapperDoc::initWithData(bytes(text), nullptr)->xmlString() + "\n", text);
  }
  const auto scoping = SAMLScoping::createElement();
  for (const auto id : {"a", "a"}) scoping->addRequesterId(id);
  texts["scoping.xml"] = *scoping->xmlString() + "\n";
  const auto attribute = SAMLAttribute::createElement();
  for (const auto name : {"first", "HouseholdID"}) attribute->setName(name);
  for (const auto value : {"5", "6"}) attribute->addAttributeValue(value);
  texts["attribute.xml"] = *attribute->xmlString() + "\n";
  expectAllKept("tests/golden/requests/", ".xml", texts);
  EXPECT_EQ(shown(attributes->channelId(), authz->channelId(), logout->issuer(), logout->reason(),
                  logout->notOnOrAfter()),
            "HARBOUR HARBOUR https://tv.example bye 9999-12-31T23:59:59Z");
}

TEST_F(Requests, SettersThatAddAndSettersThatReplace) {
  const auto first = SAMLSubject::createElement(), second = SAMLSubject::createElement();

  const auto authn = SAMLAuthNRequestElement::createElement();
  const auto policy = authn->nameIdPolicy();
  authn->setNameIdPolicy(SAMLNameIdPolicy::createElement());
  EXPECT_EQ(authn->nameIdPolicy(), policy);
  for (const auto& subject : {first, first, second}) authn->setSubject(subject);
  authn->setSubject(nullptr);
  EXPECT_EQ(authn->subject(), first);
  for (const auto text : {"one", "two"}) authn->setIssuer(text);
  authn->setConditions(SAMLConditions::createElement());
  for (int n = 0; n < 2; ++n) authn->setScoping(SAMLScoping::createElement());
  EXPECT_EQ(shown(authn->elements()),
            "[<Issuer> <NameIdPolicy> <NameIdPolicy> <Subject> <Subject> <Conditions> <Scoping> "
            "<Scoping>]");
  authn->setProviderName("P");
  authn->setIsPassive(true);
  authn->setDestination("d");
  EXPECT_EQ(shown(authn->issuer(), authn->providerName(), authn->isPassive(), authn->forceAuthN(),
                  authn->destination()),
            "two - 1 0 d");

  const auto query = SAMLAttributeQueryElement::createElement();
  for (const auto& subject : {first, second}) query->setSubject(subject);
  query->setSubject(nullptr);
  for (const auto text : {"one", "two"}) query->setChannelId(text);
  EXPECT_EQ(query->subject(), second);
  EXPECT_EQ(shown(query->elements(), query->channelId()), "[<Issuer> <Subject>] two");

  const auto decision = SAMLAuthZDecisionQueryElement::createElement();
  for (const auto& subject : {first, second}) decision->setSubject(subject);
  for (const auto action : {"Play", "Play"}) decision->addAction(action);
  for (const auto text : {"one", "two"}) decision->setChannelId(text);
  for (int n = 0; n < 2; ++n) decision->setEvidence(SAMLEvidence::createElement());
  decision->setEvidence(nullptr);
  decision->setDestination("d");
  EXPECT_EQ(shown(decision->elements(), decision->destination()),
            "[<Issuer> <Subject> <Subject> <Action> <Action> <Element>] d");
  decision->setElements({XMLWrapperElement::initWithTagName("Element")});
  decision->addAction("Play");
  EXPECT_EQ(decision->elements().back()->tagName(), "Element");

  const auto logout = SAMLLogoutRequestElement::createElement();
  for (const auto text : {"one", "two"}) logout->setSessionIndex(text);
  for (const auto text : {"one", "two"}) logout->setIssuer(text);
  logout->setDestination("d");
  logout->setNotOnOrAfter(
      SAMLDate(std::chrono::system_clock::time_point(std::chrono::milliseconds(1999))));
  EXPECT_EQ(shown(logout->elements(), logout->sessionIndex(), logout->issuer(),
                  logout->destination(), logout->notOnOrAfter()),
            "[<Issuer> <SessionIndex>] two two d 1970-01-01T00:00:01Z");
}

TEST_F(Requests, WhateverTextIsSetTheMessageCanBeRead) {
  const LogCapture log;
  const std::pair<std::string, std::optional<std::string>> rows[] = {
      {"<a>&\"' one\ntwo\tthree\rfour ]]> &undefined; \xC3\xA9\xF0\x9F\x93\xBA",
       std::nullopt},  // itself
      {std::string("a\0b\x01", 4), "a\uFFFDb\uFFFD"},
      {"a\uFFFF!", "a\uFFFD!"},
      {"a\xC3", "a\uFFFD"},
  };
  for (const auto& [text, expected] : rows) {
    const auto request = controller_.newAuthNRequest(text);
    request->setProviderName(text);
    std::optional<ErrorInfo> error;
    const auto again =
        SAMLAuthNRequest::initWithData(bytes(*request->xmlString()), nullptr, &error);
    ASSERT_TRUE(again && again->requestElement()) << text;
    EXPECT_EQ(again->issuer(), expected.value_or(text));
    EXPECT_EQ(again->requestElement()->attributeWithName("ProviderID")->value(),
              expected.value_or(text));
  }
  EXPECT_EQ(
      LogCapture::lines(),
      std::vector<std::string>(3, "What XML forbids in a text was written as U+FFFD (2 times)"));

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

TEST_F(Requests, TheResourceIsWrittenAsItStands) {
  const LogCapture log;
  for (const auto resource :
       {"https://tv.example/?x[]=1", "/a|b", "/{id}", "/\u00FC", "not a URL"}) {
    const auto query = controller_.newAuthZQuery(resource, "C");
    EXPECT_EQ(query->requestElement()->resource(), resource);
    const auto again = SAMLAuthZDecisionQuery::initWithData(bytes(*query->xmlString()), nullptr);
    EXPECT_EQ(again->requestElement()->resource(), resource);
  }
  const auto none = controller_.newAuthZQuery(std::string_view(), "C")->requestElement();
  EXPECT_EQ(none->resource(), std::nullopt);
  EXPECT_TRUE(none->attributeWithName("Resource"));

  // A date that no message can carry leaves the attribute without a value.
  const auto logout = controller_.newLogoutRequest();
  logout->setNotOnOrAfter(SAMLDate(std::chrono::sys_days(std::chrono::year(12026) / 1 / 1)));
  EXPECT_EQ(logout->requestElement()->attributeWithName("NotOnOrAfter")->value(), std::nullopt);
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
  none->setSubjectFromResponse(kResponse);
  EXPECT_EQ(none->issuer(), std::nullopt);
  EXPECT_EQ(none->xmlString(), std::nullopt);
}

// With which schema a response is read for its subject, and what yields none.
TEST_F(Requests, SubjectsFromResponses) {
  const std::string valid = file("tests/fixtures/answer.xml");
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
