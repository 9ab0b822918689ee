// The rules of the element classes, over inline XML.

#include <algorithm>

#include "kestrelink/saml/elements/SAMLNames.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

TEST(BaseElement, MakesNothing) {
  std::optional<ErrorInfo> error;
  EXPECT_EQ(SAMLBaseElement::createElement(&error), nullptr);
  EXPECT_EQ(text(error), "SAMLParserErrorDomain 201");
}

TEST(MadeElements, NamespacesAndNames) {
  const std::shared_ptr<XMLWrapperElement> made[] = {
      SAMLResponseElement::createElement(),
      SAMLStatus::createElement(),
      SAMLStatusCode::createElement(),
      SAMLAssertion::createElement(),
      SAMLSubject::createElement(),
      SAMLNameId::createElement(),
      SAMLConditions::createElement(),
      SAMLAuthNStatement::createElement(),
      SAMLAttribute::createElement(),
      SAMLAuthZDecision::createElement(),
      SAMLEvidence::createElement(),
      SAMLAdvice::createElement(),
      SAMLIDPEntry::createElement(),
      SAMLRequestedAuthNContext::createElement(),
      SAMLSignature::createElement(),
      SAMLSignatureReference::createElement(),
      SAMLKeyInfo::createElement(),
      SAMLSignatureKeyValue::createElement(),
      SAMLDSAKeyValue::createElement(),
      SAMLRSAKeyValue::createElement(),
      SAMLX509Data::createElement(),
      SAMLPGPData::createElement(),
      SAMLKeyRetrievalMethod::createElement(),
  };
  std::string written;
  for (const auto& element : made) written += element->xmlString().value() + "\n";
  EXPECT_EQ(written, file("tests/golden/elements/made.txt"));
  // Those that write nothing while they are empty.
  EXPECT_EQ(SAMLSignedInfo::createElement()->namespaces().at(0)->prefix(), "ds");
  EXPECT_EQ(SAMLSubjectConfirmation::createElement()->namespaces().at(0)->prefix(), "saml");
}

// Makes "." in the tag names below an element a ":", which only trees made in memory have there.
void setPrefixes(const XMLWrapperElement& element) {
  for (const auto& child : element.elements()) {
    std::string name = child->tagName().value();
    std::replace(name.begin(), name.end(), '.', ':');
    child->setTagName(name);
    setPrefixes(*child);
  }
}

// All that an element answers, if it is of that class.
template <class Element, class... Answers>
std::string answers(const XMLWrapperElement& element, Answers (Element::*... operations)() const) {
  const auto* const typed = dynamic_cast<const Element*>(&element);
  return typed ? *element.tagName() + ": " + shown((typed->*operations)()...) + "\n" : "";
}

std::string messageAnswers(const XMLWrapperElement& e) {
  using Authn = SAMLAuthNRequestElement;
  using Query = SAMLAttributeQueryElement;
  using Authz = SAMLAuthZDecisionQueryElement;
  using Logout = SAMLLogoutRequestElement;
  using Response = SAMLResponseElement;
  using Context = SAMLRequestedAuthNContext;
  return answers(e, &Response::identifier, &Response::issueInstant, &Response::destination,
                 &Response::consent, &Response::issuer, &Response::signature,
                 &Response::relatedRequest, &Response::status, &Response::assertions,
                 &Response::authnStatement) +
         answers(e, &Authn::identifier, &Authn::issueInstant, &Authn::destination, &Authn::consent,
                 &Authn::issuer, &Authn::signature, &Authn::providerName, &Authn::forceAuthN,
                 &Authn::isPassive, &Authn::subject, &Authn::nameIdPolicy, &Authn::conditions,
                 &Authn::context, &Authn::scoping) +
         answers(e, &Query::identifier, &Query::issueInstant, &Query::destination, &Query::consent,
                 &Query::channelId, &Query::signature, &Query::subject, &Query::samlAttributes) +
         answers(e, &Authz::identifier, &Authz::issueInstant, &Authz::destination, &Authz::consent,
                 &Authz::channelId, &Authz::signature, &Authz::resource, &Authz::subject,
                 &Authz::actions, &Authz::evidence) +
         answers(e, &Logout::identifier, &Logout::issueInstant, &Logout::destination,
                 &Logout::consent, &Logout::issuer, &Logout::signature, &Logout::reason,
                 &Logout::notOnOrAfter, &Logout::nameId, &Logout::sessionIndex) +
         answers(e, &SAMLNameIdPolicy::format, &SAMLNameIdPolicy::allowCreation) +
         answers(e, &Context::comparison, &Context::classRef, &Context::declRef) +
         answers(e, &SAMLIDPEntry::providerId, &SAMLIDPEntry::name, &SAMLIDPEntry::loc) +
         answers(e, &SAMLScoping::requesterIds, &SAMLScoping::proxyCount, &SAMLScoping::getComplete,
                 &SAMLScoping::idpList);
}

std::string assertionAnswers(const XMLWrapperElement& e) {
  using Assertion = SAMLAssertion;
  using Conditions = SAMLConditions;
  using Confirmation = SAMLSubjectConfirmation;
  using Statement = SAMLAuthNStatement;
  return answers(e, &SAMLStatusCode::value, &SAMLStatusCode::statusCode) +
         answers(e, &SAMLStatus::statusCode, &SAMLStatus::status, &SAMLStatus::statusMessage,
                 &SAMLStatus::statusDetail) +
         answers(e, &Assertion::identifier, &Assertion::issueInstant, &Assertion::issuer,
                 &Assertion::subject, &Assertion::advice, &Assertion::conditions,
                 &Assertion::signature, &Assertion::authentication, &Assertion::authorizations,
                 &Assertion::samlAttributes) +
         answers(e, &SAMLSubject::nameId, &SAMLSubject::subjectConfirmations) +
         answers(e, &SAMLNameId::spProvidedId, &SAMLNameId::nameQualifier,
                 &SAMLNameId::spNameQualifier, &SAMLNameId::format) +
         answers(e, &Confirmation::method, &Confirmation::nameId, &Confirmation::notBefore,
                 &Confirmation::notOnOrAfter, &Confirmation::recipient, &Confirmation::inResponseTo,
                 &Confirmation::address) +
         answers(e, &Conditions::audienceRestrictions, &Conditions::oneTimeUse,
                 &Conditions::proxyRestrictionAudienceCount, &Conditions::proxyRestrictions,
                 &Conditions::conditions) +
         answers(e, &Statement::sessionIndex, &Statement::authnInstant,
                 &Statement::sessionNotOnOrAfter, &Statement::subjectAddress,
                 &Statement::subjectDNSName, &Statement::authnContextDecl,
                 &Statement::authnContextDeclRef, &Statement::authnContextClassRef,
                 &Statement::authenticatingAuthority) +
         answers(e, &SAMLAttribute::name, &SAMLAttribute::nameFormat, &SAMLAttribute::friendlyName,
                 &SAMLAttribute::values) +
         answers(e, &SAMLAuthZDecision::resource, &SAMLAuthZDecision::decision,
                 &SAMLAuthZDecision::actions, &SAMLAuthZDecision::evidence) +
         answers(e, &SAMLEvidence::assertionIdRef, &SAMLEvidence::assertionURIRef,
                 &SAMLEvidence::assertion) +
         answers(e, &SAMLAdvice::assertionIDRef, &SAMLAdvice::assertionURIRef,
                 &SAMLAdvice::assertion);
}

std::string signatureAnswers(const XMLWrapperElement& e) {
  using Dsa = SAMLDSAKeyValue;
  using Info = SAMLSignedInfo;
  using Key = SAMLKeyInfo;
  using Method = SAMLKeyRetrievalMethod;
  using Reference = SAMLSignatureReference;
  using Signature = SAMLSignature;
  using X509 = SAMLX509Data;
  return answers(e, &Signature::identifier, &Signature::signedInfo, &Signature::signatureValue,
                 &Signature::signatureValueId, &Signature::keyInfo, &Signature::isValid) +
         answers(e, &Info::identifier, &Info::canonicalizationMethod, &Info::signatureMethod,
                 &Info::signatureMethodLength, &Info::references) +
         answers(e, &Reference::identifier, &Reference::uri, &Reference::type,
                 &Reference::transforms, &Reference::digestMethod, &Reference::digestValue) +
         answers(e, &Key::identifier, &Key::keyName, &Key::keyValue, &Key::retrievalMethod,
                 &Key::x509Data, &Key::pgpData, &Key::spkiSexpData, &Key::mgmtData) +
         answers(e, &SAMLSignatureKeyValue::dsaKeyValue, &SAMLSignatureKeyValue::rsaKeyValue) +
         answers(e, &SAMLRSAKeyValue::modulus, &SAMLRSAKeyValue::exponent) +
         answers(e, &Dsa::p, &Dsa::q, &Dsa::g, &Dsa::y, &Dsa::j, &Dsa::seed, &Dsa::pgenCounter) +
         answers(e, &Method::uri, &Method::type, &Method::transforms) +
         answers(e, &X509::issuerName, &X509::serialNumber, &X509::ski, &X509::subjectName,
                 &X509::certificate, &X509::crl) +
         answers(e, &SAMLPGPData::keyId, &SAMLPGPData::packet);
}

std::string allAnswers(const XMLWrapperElement& element) {
  std::string all = messageAnswers(element) + assertionAnswers(element) + signatureAnswers(element);
  for (const auto& child : element.elements()) all += allAnswers(*child);
  return all;
}

// Each property of each class: found under its exact name, among direct children, absent elsewhere.
TEST(Elements, GoldenAnswers) {
  const auto element = root(file("tests/golden/elements/read.xml"));
  setPrefixes(*element);
  EXPECT_EQ(allAnswers(*element), file("tests/golden/elements/read.txt"));
}

TEST(Assertion, DecisionsForAResource) {
  const auto assertion = root<SAMLAssertion>(
      "<Assertion><AuthzDecisionStatement Resource='std' Decision='Permit'/>"
      "<AuthzDecisiontStatement Resource='r' Decision='Deny'/><AuthzDecisiontStatement "
      "Resource='r' Decision='Permit'/>"
      "<AuthzDecisiontStatement Resource='undecided'/></Assertion>");
  EXPECT_EQ(assertion->authorizationForResource("r"), "Deny");
  for (const auto none : {"std", "R", "undecided", ""}) {
    EXPECT_EQ(assertion->authorizationForResource(none), std::nullopt) << none;
  }
}

TEST(Assertion, Audience) {
  const auto assertion = root<SAMLAssertion>(
      "<Assertion><Conditions><AudienceRestriction><Audience>a</Audience><Audience>b</Audience>"
      "</AudienceRestriction><AudienceRestriction><Audience>c</Audience></AudienceRestriction>"
      "</Conditions></Assertion>");
  EXPECT_TRUE(assertion->isValidForRequestor("b"));
  EXPECT_FALSE(assertion->isValidForRequestor("c"));
  EXPECT_FALSE(root<SAMLAssertion>("<Assertion/>")->isValidForRequestor(""));
}

// Time: each row at 2020-01-01T00:00:00Z, and half a second later.
TEST(Conditions, TimeWindow) {
  struct Row {
    const char* attributes;
    bool met, metHalfASecondLater;
  };
  const Row rows[] = {
      {"", true, true},
      {"NotBefore='2020-01-01T00:00:00Z'", true, true},
      {"NotBefore='2020-01-01T00:00:01Z'", false, false},
      {"NotOnOrAfter='2020-01-01T00:00:00Z'", false, false},
      {"NotOnOrAfter='2020-01-01T00:00:01Z'", true, true},
      {"NotOnOrAfter='2019-12-31T23:59:59Z'", false, false},
      {"NotBefore='2019-01-01T00:00:00Z' NotOnOrAfter='9999-12-31T23:59:59Z'", true, true},
      {"NotBefore='2021-01-01T00:00:00Z' NotOnOrAfter='2022-01-01T00:00:00Z'", false, false},
      {"NotOnOrAfter='2019-01-01T00:00:00.5Z'", true, true},  // does not parse: no restriction
      {"NotBefore='2030-01-01T00:00:00+01:00'", true, true},  // nor this
  };
  for (const Row& row : rows) {
    const auto conditions =
        root<SAMLConditions>(std::string("<Conditions ") + row.attributes + "/>");
    for (const bool later : {false, true}) {
      const StandingClock clock("2020-01-01T00:00:00Z", std::chrono::milliseconds(later ? 500 : 0));
      const bool met = later ? row.metHalfASecondLater : row.met;
      std::optional<ErrorInfo> error;
      EXPECT_EQ(conditions->assertionMeetsConditions(&error), met) << row.attributes;
      EXPECT_EQ(text(error), met ? "none" : "SAMLParserErrorDomain 401") << row.attributes;
    }
  }
}

TEST(AuthNStatement, ValidUntilItsSessionEnds) {
  const std::pair<const char*, bool> rows[] = {
      {"SessionNotOnOrAfter='2020-01-01T00:00:01Z'", true},
      {"SessionNotOnOrAfter='2020-01-01T00:00:00Z'", false},
      {"SessionNotOnOrAfter='2019-12-31T23:59:59Z'", false},
      {"SessionNotOnOrAfter='2030-01-01T00:00:00.5Z'", false},
      {"NotOnOrAfter='2030-01-01T00:00:00Z'", false},
  };
  const StandingClock clock("2020-01-01T00:00:00Z");
  for (const auto& [attribute, valid] : rows) {
    const std::string statement = std::string("<AuthnStatement ") + attribute + "/>";
    EXPECT_EQ(root<SAMLAuthNStatement>(statement)->isValid(), valid) << attribute;
    std::optional<ErrorInfo> error;
    const auto assertion =
        root<SAMLAssertion>("<Assertion><Signature/>" + statement + "</Assertion>");
    EXPECT_EQ(assertion->isValid(&error), valid);
    EXPECT_EQ(text(error), valid ? "none" : "SAMLParserErrorDomain 401");
  }
  EXPECT_TRUE(root<SAMLAssertion>("<Assertion/>")->isValid());
}

TEST(Attribute, ValuesInOrder) {
  const auto made = SAMLAttribute::createElement();
  made->setName("first");
  made->setName("HouseholdID");
  made->addAttributeValue("5");
  made->addAttributeValue("6");
  EXPECT_EQ(*made->xmlString() + "\n", file("tests/golden/elements/attribute.xml"));
}

TEST(Advice, ReferencesStayEmpty) {
  const auto advice = SAMLAdvice::createElement();
  advice->setAssertion(SAMLAssertion::createElement());
  advice->setAssertionIDRef("_a");
  advice->setAssertionURIRef("urn:a");
  EXPECT_EQ(shown(advice->elements(), advice->assertionIDRef(), advice->assertionURIRef()),
            "[<Assertion> <AssertionIDRef> <AssertionURIRef>] - -");
}

// Both classes that order their own children: what is written, and nothing when a child is missing.
TEST(OwnOrder, WritesAllOrNothing) {
  const std::pair<const char*, std::optional<std::string>> rows[] = {
      {"<SubjectConfirmation><SubjectConfirmationData/><x/><NameId/><NameId/>"
       "<SubjectConfirmationData/></SubjectConfirmation>",
       "<SubjectConfirmation>\n  <NameId/>\n  <SubjectConfirmationData/>\n</SubjectConfirmation>"},
      {"<SubjectConfirmation><NameId/></SubjectConfirmation>", std::nullopt},
      {"<SignedInfo><Reference URI='1'/><SignatureMethod/><Reference URI='2'/><x/>"
       "<CanonicalizationMethod/></SignedInfo>",
       "<SignedInfo>\n  <CanonicalizationMethod/>\n  <SignatureMethod/>\n  <Reference URI=\"1\"/>\n"
       "  <Reference URI=\"2\"/>\n</SignedInfo>"},
      {"<SignedInfo><SignatureMethod/></SignedInfo>", std::nullopt},
      {"<SignedInfo><CanonicalizationMethod/><x/></SignedInfo>", std::nullopt},
      {"<r><SubjectConfirmation/><c/></r>", "<r>\n  <c/>\n</r>"},
  };
  const LogCapture log;
  for (const auto& [xml, expected] : rows) {
    const auto element = root(xml);
    const std::size_t children = element->elements().size();
    EXPECT_EQ(element->xmlString(), expected) << xml;
    EXPECT_EQ(element->xmlString(), expected) << "written twice: " << xml;
    if (!expected) {
      EXPECT_EQ(element->elements().size(), children) << "nothing dropped: " << xml;
    }
  }
  EXPECT_EQ(LogCapture::lines().size(), 8u);
}

}  // namespace
}  // namespace kestrelink::testing
