// The standard forms are valid against the schema and stay as they are; what cannot be given one is
// named and not changed. What the look-ups by the standard's names find.

#include "kestrelink/platform/Uuid.h"
#include "kestrelink/standard/StandardForms.h"

#include "tests/support/Support.h"

namespace kestrelink::standard {
namespace {

using namespace kestrelink::testing;

const SAMLParserController& controller() { return SAMLParserController::sharedInstance(); }

// Subjects of responses that need all the care there is.
const std::string kSubjects[] = {
    "<saml:Subject><saml:NameID Format='urn:f'>n</saml:NameID></saml:Subject>",
    "<Subject xmlns='urn:s'><NameId>n</NameId></Subject>",
    "<Subject xmlns='urn:oasis:names:tc:SAML:2.0:assertion'><NameID "
    "xsi:type='NameIDType'>n</NameID>"
    "<SubjectConfirmation Method='urn:m'><NameID>m</NameID></SubjectConfirmation>"
    "<SubjectConfirmation Method='urn:m'><SubjectConfirmationData xml:lang='en' x:a='1' "
    "Address='a'><y xmlns='' x:b='2'/></SubjectConfirmationData></SubjectConfirmation></Subject>",
    "<saml:Subject><saml:SubjectConfirmation Method='urn:m'/></saml:Subject>"};

std::string response(const std::string& subject) {
  return "<Response xmlns:x='urn:x' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
         "xmlns:saml='urn:oasis:names:tc:SAML:2.0:assertion'><Assertion>" +
         subject + "</Assertion></Response>";
}

// The text of the request in its standard form, which must be valid and stay the same.
template <class Request>
std::string formOf(Request& request) {
  EXPECT_EQ(reasonOf(toStandardForm(request)), reasonOf(StandardForm::made));
  const std::string text = *request.xmlString();
  std::optional<ErrorInfo> error;
  EXPECT_TRUE(XMLWrapperDoc::initWithData(bytes(text), controller().schema(), &error))
      << text << (error ? error->info.begin()->second : "");
  EXPECT_EQ(toStandardForm(request), StandardForm::made);
  EXPECT_EQ(request.xmlString(), text);
  return text;
}

template <class Request>
void setSubject(Request& request, const std::string& subject) {
  request.requestElement()->setSubject(read(response(subject))->subject());
}

TEST(StandardForms, AreValidWithEverySubject) {
  for (const std::string& subject : kSubjects) {
    const auto authn = controller().newAuthNRequest("I");
    setSubject(*authn, subject);
    const std::string written = formOf(*authn);
    const std::size_t confirmations =
        read(response(subject))->subject()->subjectConfirmations().size();
    EXPECT_EQ(
        authn->requestElement()->subject()->getElementsByTagName("SubjectConfirmation").size(),
        confirmations);

    const auto attributes = controller().newAttributeQuery("C");
    attributes->addAttribute("A", {"1"});
    setSubject(*attributes, subject);
    formOf(*attributes);

    const auto authz = controller().newAuthZQuery("https://tv.example/1", "C");
    authz->addAction("Play");
    setSubject(*authz, subject);
    formOf(*authz);
  }
}

TEST(StandardForms, SayWhatWasSaid) {
  const auto authn = controller().newAuthNRequest("I");
  const auto filledIn = authn->requestElement();
  authn->setProviderName("P");
  authn->setForceAuthN(true);
  for (const auto text : {"<NameIdPolicy Format='urn:1'/>", "<NameIdPolicy Format='urn:2'/>"}) {
    filledIn->addChildElement(elementFromText(text));
  }
  for (const auto text : {"<Scoping/>", "<Scoping ProxyCount='1'/>"}) {
    filledIn->addChildElement(elementFromText(text));
  }
  std::dynamic_pointer_cast<SAMLScoping>(filledIn->elements().back())->addRequesterId("urn:r");
  filledIn->addChildElement(
      elementFromText("<Conditions xmlns='urn:oasis:names:tc:SAML:2.0:assertion'/>"));
  setDestination(*authn, "https://idp.example/?a&b");
  setAssertionConsumerService(*authn, "https://tv.example/acs");
  formOf(*authn);
  authn->setProviderName("Q");
  const std::string text = formOf(*authn);
  for (const char* part :
       {" ProviderName=\"Q\"", " ForceAuthn=\"true\"",
        "<samlp:NameIDPolicy xmlns:samlp=\"urn:oasis:names:tc:SAML:2.0:protocol\" "
        "Format=\"urn:2\"/>",
        ">urn:r</samlp:RequesterID>", " Destination=\"https://idp.example/?a&amp;b\"",
        " AssertionConsumerServiceURL=\"https://tv.example/acs\"", "bindings:HTTP-POST\""}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << text;
  }
  EXPECT_EQ(shown(filledIn->elements()),
            "[<Issuer> <NameIdPolicy> <NameIdPolicy> <NameIdPolicy> "
            "<Scoping> <Scoping> <Conditions>]");

  const auto authz = controller().newAuthZQuery("https://tv.example/1", "C");
  setSubject(*authz, kSubjects[0]);
  authz->addAction("Play");
  authz->addAction("Record");
  authz->requestElement()->actions()[1]->setAttributeWithName("Namespace", "urn:own");
  authz->requestElement()->addChildElement(elementFromText("<Element/>"));
  formOf(*authz);
  EXPECT_EQ(shown(authz->requestElement()->elements()), "[<Issuer> <Subject> <Action> <Action>]");
  EXPECT_EQ(attributeText(*authz->requestElement()->actions()[0], "Namespace"),
            kDefaultActionNamespace);
  EXPECT_EQ(attributeText(*authz->requestElement()->actions()[1], "Namespace"), "urn:own");
}

TEST(StandardForms, OfLogoutRequests) {
  for (const char* uuid : {"0B1F6F0E", "-1", "AB1F6F0E", "_1"}) {
    static std::string fresh;
    fresh = uuid;
    setUuidSourceForTesting([] { return fresh; });
    const auto logout = controller().newLogoutRequest();
    setUuidSourceForTesting(nullptr);
    const auto subject = read(response(kSubjects[0]))->subject();
    EXPECT_TRUE(setNameIdFrom(*logout, *subject));
    EXPECT_TRUE(setNameIdFrom(*logout, *subject));
    EXPECT_NE(logout->xmlString()->find("<saml:NameId "), std::string::npos)
        << "the library's own form";
    logout->requestElement()->setSessionIndex("s");
    logout->setNotOnOrAfter(std::nullopt);
    formOf(*logout);
    EXPECT_EQ(logout->requestElement()->identifier(),
              fresh[0] == 'A' || fresh[0] == '_' ? fresh : "_" + fresh);
    EXPECT_EQ(logout->requestElement()->firstElementByTagName("NameID")->textContent(), "n");
    EXPECT_EQ(nameIdOf(*subject)->tagName(), "NameID") << "the response keeps its own";
  }
}

TEST(StandardForms, NameWhatTheyCannotMendAndChangeNothing) {
  const auto authn = [](const std::string& subject) {
    const auto request = controller().newAuthNRequest("I");
    setSubject(*request, subject);
    return request;
  };
  const auto query = [](const char* resource, const char* action, int subjects) {
    const auto made = controller().newAuthZQuery(resource, "C");
    if (action != nullptr) made->addAction(action);
    for (int count = 0; count < subjects; ++count) setSubject(*made, kSubjects[0]);
    return made;
  };
  const auto logout = [](const char* id, const std::vector<const char*>& identifiers) {
    const auto made = controller().newLogoutRequest();
    made->requestElement()->setAttributeWithName("ID", id);
    for (const char* text : identifiers) made->requestElement()->addChildElement(newNameId(text));
    return made;
  };
  const auto expect = [](const auto& request, StandardForm expected) {
    const auto before = request->requestElement();
    const auto attributes = before->attributes();
    const auto elements = before->elements();
    EXPECT_STREQ(reasonOf(toStandardForm(*request)), reasonOf(expected));
    EXPECT_EQ(request->requestElement(), before);
    EXPECT_EQ(request->documentElement(), before);
    EXPECT_EQ(before->attributes(), attributes);
    EXPECT_EQ(before->elements(), elements);
  };
  expect(controller().newAttributeQuery("C"), StandardForm::noSubject);
  expect(authn("<Subject/>"), StandardForm::noNameIdentifier);
  expect(authn("<Subject><NameID/><NameId/></Subject>"), StandardForm::severalNameIdentifiers);
  expect(authn("<Subject><SubjectConfirmation/></Subject>"),
         StandardForm::confirmationWithoutMethod);
  expect(authn("<Subject><SubjectConfirmation Method='m'><NameID/><BaseID/></SubjectConfirmation>"
               "</Subject>"),
         StandardForm::severalNameIdentifiers);
  expect(query("no URL", "Play", 1), StandardForm::noResource);
  expect(query("urn:r", nullptr, 1), StandardForm::noAction);
  expect(query("urn:r", "Play", 0), StandardForm::noSubject);
  expect(query("urn:r", "Play", 2), StandardForm::severalSubjects);
  expect(logout("_1", {}), StandardForm::noNameIdentifier);
  expect(logout("_1", {"a", "b"}), StandardForm::severalNameIdentifiers);
  expect(logout("a b", {"a"}), StandardForm::badIdentifier);
  expect(logout("", {"a"}), StandardForm::badIdentifier);
  EXPECT_EQ(toStandardForm(*SAMLAuthNRequest::initWithElement(nullptr, nullptr)),
            StandardForm::noRequest);
  EXPECT_STRNE(reasonOf(StandardForm::noRequest), "");
}

TEST(StandardReading, FindsWhatTheOwnNamesPassOver) {
  const auto message = read(
      "<Response InResponseTo='r' Destination='d' IssueInstant=''><EncryptedAssertion/>"
      "<Signature xmlns='http://www.w3.org/2000/09/xmldsig#'/><x><Signature/></x><Assertion "
      "IssueInstant='2026-01-15T20:15:02+01:00'><Signature "
      "xmlns='http://www.w3.org/2000/09/xmldsig#'/>"
      "<Subject><NameId>old</NameId><NameID>new</NameID><SubjectConfirmation/><SubjectConfirmation>"
      "<SubjectConfirmationData Recipient='R' NotBefore='2026-02-30T00:00:00Z' "
      "NotOnOrAfter='2026-01-15T20:15:02'/></SubjectConfirmation></Subject>"
      "<Conditions NotBefore=' 2026-01-15T20:15:02Z' NotOnOrAfter='2026-01-15'>"
      "<AudienceRestriction><Audience>a</Audience></AudienceRestriction>"
      "<AudienceRestriction><Audience>b</Audience></AudienceRestriction></Conditions>"
      "<AuthnStatement AuthnInstant='2026-01-15T20:15:02Z' "
      "SessionNotOnOrAfter='2026-01-15T20:15:02.5Z'/>"
      "<AuthzDecisionStatement Resource='urn:1' Decision='Deny'><Action>Play</Action>"
      "</AuthzDecisionStatement></Assertion>"
      "<Assertion><AuthzDecisiontStatement Resource='urn:2' Decision='Permit'/>"
      "<AuthzDecisionStatement Resource='urn:1' Decision='Permit'/></Assertion></Response>");
  const auto assertion = message->assertions()->front();
  EXPECT_EQ(shown(nameIdOf(*message->subject())->textContent(), audiencesOf(*assertion),
                  recipientOf(*message), inResponseTo(*message), destinationOf(*message)),
            "new [a b] R r d");
  EXPECT_EQ(encryptedAssertions(*message), 1u);
  EXPECT_EQ(shown(signedElements(*message)), "[<Response> <Assertion>]");
  EXPECT_EQ(shown(decisionForResource(*message, "urn:1"), decisionForResource(*message, "urn:2"),
                  decisionForResource(*message, "urn:3"), decisionsOf(*assertion)[0].actions),
            "Deny Permit - [Play]");

  std::string dates;
  for (const UnreadDate& date : unreadDates(*message)) {
    dates += date.element + " " + date.attribute + ": " + date.reason + "\n";
  }
  EXPECT_EQ(dates,
            "Response IssueInstant: it is empty\n"
            "Assertion IssueInstant: it has an offset from UTC\n"
            "SubjectConfirmationData NotBefore: there is no such day or time\n"
            "SubjectConfirmationData NotOnOrAfter: it names no time zone\n"
            "Conditions NotBefore: it has white space\n"
            "Conditions NotOnOrAfter: it is not of the form 2026-01-15T20:15:02Z\n"
            "AuthnStatement SessionNotOnOrAfter: it has a fraction of a second\n");
}

TEST(StandardReading, FindsNothingWhereNothingIs) {
  for (const char* xml :
       {"<Response/>", "<LogoutResponse/>", "<Other/>", "<Response><Assertion/></Response>",
        "<Response><Assertion><Subject/></Assertion></Response>"}) {
    const auto message = read(xml);
    EXPECT_EQ(shown(recipientOf(*message), inResponseTo(*message), destinationOf(*message),
                    decisionForResource(*message, "urn:1"), signedElements(*message)),
              "- - - - []")
        << xml;
    EXPECT_EQ(encryptedAssertions(*message) + unreadDates(*message).size(), 0u) << xml;
  }
  EXPECT_EQ(elementFromText("no XML"), nullptr);
  EXPECT_FALSE(setNameIdFrom(*controller().newLogoutRequest(), *root<SAMLSubject>("<Subject/>")));
}

}  // namespace
}  // namespace kestrelink::standard
