// The rules of the element classes, over inline XML.

#include "kestrelink/saml/elements/SAMLNames.h"

#include "Support.h"

namespace kestrelink::testing {
namespace {

using Texts = std::vector<std::string>;

const std::vector<std::uint8_t> kAbc = {'a', 'b', 'c'};

TEST(BaseElement, MakesNothing) {
  std::optional<ErrorInfo> error;
  EXPECT_EQ(SAMLBaseElement::createElement(&error), nullptr);
  EXPECT_EQ(text(error), "SAMLParserErrorDomain 201");
}

TEST(MadeElements, NamespacesAndNames) {
  const std::string saml = " xmlns:saml=\"urn:oasis:names:tc:SAML:2.0:assertion\"/>";
  const std::string samlp = " xmlns:samlp=\"urn:oasis:names:tc:SAML:2.0:protocol\"/>";
  const std::string ds = " xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\"/>";
  const std::pair<std::shared_ptr<XMLWrapperElement>, std::string> rows[] = {
      {SAMLResponseElement::createElement(), "<samlp:Response" + samlp},
      {SAMLStatus::createElement(), "<samlp:Status" + samlp},
      {SAMLStatusCode::createElement(), "<samlp:StatusCode" + samlp},
      {SAMLAssertion::createElement(), "<saml:Assertion" + saml},
      {SAMLSubject::createElement(), "<saml:Subject" + saml},
      {SAMLNameId::createElement(), "<saml:NameId" + saml},
      {SAMLConditions::createElement(), "<saml:Conditions" + saml},
      {SAMLAuthNStatement::createElement(), "<saml:AuthnStatement" + saml},
      {SAMLAttribute::createElement(), "<saml:Attribute" + saml},
      {SAMLAuthZDecision::createElement(), "<saml:AuthzDecisiontStatement" + saml},
      {SAMLEvidence::createElement(), "<saml:Element" + saml},
      {SAMLAdvice::createElement(), "<saml:Advice" + saml},
      {SAMLIDPEntry::createElement(), "<samlp:IDPEntry" + samlp},
      {SAMLRequestedAuthNContext::createElement(), "<samlp:RequestedAuthnContext" + samlp},
      {SAMLSignature::createElement(), "<ds:Signature" + ds},
      {SAMLSignatureReference::createElement(), "<Reference/>"},
      {SAMLKeyInfo::createElement(), "<ds:KeyInfo" + ds},
      {SAMLSignatureKeyValue::createElement(), "<KeyValue/>"},
      {SAMLDSAKeyValue::createElement(), "<DSAKeyValue/>"},
      {SAMLRSAKeyValue::createElement(), "<RSAKeyValue/>"},
      {SAMLX509Data::createElement(), "<X509Data/>"},
      {SAMLPGPData::createElement(), "<PGPData/>"},
      {SAMLKeyRetrievalMethod::createElement(), "<RetrievalMethod/>"},
  };
  for (const auto& [element, expected] : rows) EXPECT_EQ(element->xmlString(), expected);
  // Those that write nothing while they are empty.
  EXPECT_EQ(SAMLSignedInfo::createElement()->namespaces().at(0)->prefix(), "ds");
  EXPECT_EQ(SAMLSubjectConfirmation::createElement()->namespaces().at(0)->prefix(), "saml");
}

template <class Request>
void readsItsOwn(const std::string& name) {
  const auto request =
      root<Request>("<" + name +
                    " ID='_i' IssueInstant='2020-01-01T00:00:00Z' Destination='d' Decision='e' "
                    "Consent='c'><Issuer>i</Issuer><Signature/></" +
                    name + ">");
  EXPECT_EQ(request->identifier(), "_i") << name;
  EXPECT_EQ(SAMLStringFromDate(request->issueInstant()), "2020-01-01T00:00:00Z") << name;
  EXPECT_EQ(request->destination(), name == "AttributeQuery" ? "e" : "d");
  EXPECT_EQ(request->consent(), "c") << name;
  EXPECT_TRUE(request->signature()) << name;
  EXPECT_EQ(request->firstElementByTagName("Issuer")->textContent(), "i");
  if constexpr (requires { request->setDestination("new"); }) {
    request->setDestination("new");
    EXPECT_EQ(request->attributeWithName("Destination")->value(), "new") << name;
  }
}

TEST(RequestElements, ReadTheirOwn) {
  readsItsOwn<SAMLAuthNRequestElement>("AuthnRequest");
  readsItsOwn<SAMLAttributeQueryElement>("AttributeQuery");
  readsItsOwn<SAMLAuthZDecisionQueryElement>("AuthzDecisionQuery");
  readsItsOwn<SAMLLogoutRequestElement>("LogoutRequest");
  const auto authn = root<SAMLAuthNRequestElement>(
      "<AuthnRequest><NameIdPolicy Format='f' AllowCreate='true'/><Scoping/></AuthnRequest>");
  EXPECT_EQ(authn->nameIdPolicy()->format(), "f");
  EXPECT_EQ(authn->nameIdPolicy()->allowCreation(), "true");
  EXPECT_TRUE(authn->scoping());
  const auto authz =
      root<SAMLAuthZDecisionQueryElement>("<AuthzDecisionQuery><Element/></AuthzDecisionQuery>");
  EXPECT_TRUE(authz->evidence());
  EXPECT_EQ(root<SAMLAttributeQueryElement>("<AttributeQuery><Attribute/></AttributeQuery>")
                ->samlAttributes()
                .size(),
            1u);
}

TEST(Assertion, ReadsDirectChildrenAlone) {
  const auto assertion = root<SAMLAssertion>(
      "<Assertion ID='_a' IssueInstant='2014-05-06T07:08:09Z'>"
      "<Subject><Issuer>deep</Issuer></Subject><Advice/>"
      "<AttributeStatement><Attribute Name='a'/><x><Attribute "
      "Name='deep'/></x></AttributeStatement>"
      "<AttributeStatement><Attribute Name='later'/></AttributeStatement></Assertion>");
  EXPECT_EQ(assertion->identifier(), "_a");
  EXPECT_EQ(SAMLStringFromDate(assertion->issueInstant()), "2014-05-06T07:08:09Z");
  EXPECT_EQ(assertion->issuer(), std::nullopt);
  EXPECT_TRUE(assertion->subject() && assertion->advice());
  ASSERT_EQ(assertion->samlAttributes().size(), 1u);
  EXPECT_EQ(assertion->samlAttributes()[0]->name(), "a");
}

TEST(Assertion, DecisionsForAResource) {
  const auto assertion = root<SAMLAssertion>(
      "<Assertion><AuthzDecisionStatement Resource='std' Decision='Permit'/>"
      "<AuthzDecisiontStatement Resource='r' Decision='Deny'><Action>Play</Action><Evidence/>"
      "<Element><AssertionIDRef>_e</AssertionIDRef></Element></AuthzDecisiontStatement>"
      "<AuthzDecisiontStatement Resource='r' Decision='Permit'/>"
      "<AuthzDecisiontStatement Resource='undecided'/></Assertion>");
  EXPECT_EQ(assertion->authorizationForResource("r"), "Deny");
  for (const auto none : {"std", "R", "undecided", ""}) {
    EXPECT_EQ(assertion->authorizationForResource(none), std::nullopt) << none;
  }
  const auto first = assertion->authorizations()[0];
  EXPECT_EQ(first->actions().size(), 1u);
  EXPECT_EQ(first->evidence()->assertionIdRef(), "_e");
  EXPECT_EQ(assertion->authorizations()[1]->evidence(), nullptr);
}

TEST(Assertion, Audience) {
  const auto assertion = root<SAMLAssertion>(
      "<Assertion><Conditions><AudienceRestriction><Audience>a</Audience><Audience/>"
      "<Audience>b</Audience></AudienceRestriction><AudienceRestriction><Audience>c</Audience>"
      "</AudienceRestriction></Conditions></Assertion>");
  EXPECT_EQ(assertion->conditions()->audienceRestrictions(), (Texts{"a", "b"}));
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

TEST(Conditions, WhatIsNeverFound) {
  const auto conditions = root<SAMLConditions>(
      "<Conditions><OneTimeUse/><ProxyRestriction Count='2'><Audience>a</Audience>"
      "</ProxyRestriction></Conditions>");
  EXPECT_TRUE(conditions->oneTimeUse());
  EXPECT_EQ(conditions->proxyRestrictionAudienceCount(), std::nullopt);
  EXPECT_EQ(conditions->proxyRestrictions(), std::nullopt);
  EXPECT_EQ(conditions->conditions(), std::nullopt);

  const auto made = SAMLConditions::createElement();
  const auto proxy = XMLWrapperElement::initWithTagName("saml:ProxyRestriction");
  proxy->setAttributeWithName("Count", "2");
  made->addChildElement(proxy);
  EXPECT_EQ(made->proxyRestrictionAudienceCount(), 2.0);
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

TEST(AuthNStatement, ContextIsReadFromAttributes) {
  const auto statement = root<SAMLAuthNStatement>(
      "<AuthnStatement SessionIndex='s' AuthnInstant='x'><SubjectLocality Address='::1' "
      "DNSName='h'/><AuthnContext AuthnContextDecl='d' AuthnContextDeclRef='r' "
      "AuthenticatingAuthority='a'><AuthnContextClassRef>c</AuthnContextClassRef></AuthnContext>"
      "</AuthnStatement>");
  EXPECT_EQ(statement->sessionIndex(), "s");
  EXPECT_EQ(statement->authnInstant(), std::nullopt);
  EXPECT_EQ(statement->subjectAddress(), "::1");
  EXPECT_EQ(statement->subjectDNSName(), "h");
  EXPECT_EQ(statement->authnContextDecl(), "d");
  EXPECT_EQ(statement->authnContextDeclRef(), "r");
  EXPECT_EQ(statement->authnContextClassRef(), std::nullopt);
  EXPECT_EQ(statement->authenticatingAuthority(), "a");
}

TEST(Attribute, ValuesInOrder) {
  const auto attribute = root<SAMLAttribute>(
      "<Attribute Name='n' NameFormat='f' FriendlyName='g'><AttributeValue>a</AttributeValue>"
      "<AttributeValue/><x><AttributeValue>deep</AttributeValue></x>"
      "<AttributeValue> b </AttributeValue></Attribute>");
  EXPECT_EQ(attribute->values(), (Texts{"a", "b"}));
  EXPECT_EQ(attribute->nameFormat(), "f");
  EXPECT_EQ(attribute->friendlyName(), "g");

  const auto made = SAMLAttribute::createElement();
  made->setName("first");
  made->setName("HouseholdID");
  made->addAttributeValue("5");
  made->addAttributeValue("6");
  EXPECT_EQ(made->name(), "HouseholdID");
  EXPECT_EQ(made->values(), (Texts{"5", "6"}));
  const std::string ns = " xmlns:saml=\"urn:oasis:names:tc:SAML:2.0:assertion\"";
  EXPECT_EQ(made->xmlString(), "<saml:Attribute" + ns + " Name=\"HouseholdID\">\n" +
                                   "  <saml:AttributeValue" + ns + ">5</saml:AttributeValue>\n" +
                                   "  <saml:AttributeValue" + ns + ">6</saml:AttributeValue>\n" +
                                   "</saml:Attribute>");
}

TEST(Advice, ReferencesStayEmpty) {
  const auto advice = SAMLAdvice::createElement();
  advice->setAssertion(SAMLAssertion::createElement());
  advice->setAssertionIDRef("_a");
  advice->setAssertionURIRef("urn:a");
  EXPECT_EQ(advice->elements().size(), 3u);
  EXPECT_TRUE(advice->assertion());
  EXPECT_EQ(advice->assertionIDRef(), std::nullopt);
  EXPECT_EQ(advice->assertionURIRef(), std::nullopt);
}

TEST(Subject, Reading) {
  const auto subject = root<SAMLSubject>(
      "<Subject><NameID>std</NameID><SubjectConfirmation Method='m'><NameId SPProvidedID='p' "
      "NameQualifier='q' SPNameQualifier='s' Format='f'>id</NameId><SubjectConfirmationData "
      "NotBefore='2030-01-01' NotOnOrAfter='2030-01-01T00:00:00Z' Recipient='r' InResponseTo='_i' "
      "Address='::1'/></SubjectConfirmation><SubjectConfirmation/></Subject>");
  EXPECT_EQ(subject->nameId(), nullptr);
  ASSERT_EQ(subject->subjectConfirmations().size(), 2u);
  const auto full = subject->subjectConfirmations()[0];
  EXPECT_EQ(full->method(), "m");
  EXPECT_EQ(full->nameId()->textContent(), "id");
  EXPECT_EQ(full->nameId()->spProvidedId(), "p");
  EXPECT_EQ(full->nameId()->nameQualifier(), "q");
  EXPECT_EQ(full->nameId()->spNameQualifier(), "s");
  EXPECT_EQ(full->nameId()->format(), "f");
  EXPECT_EQ(full->notBefore(), std::nullopt);
  EXPECT_EQ(SAMLStringFromDate(full->notOnOrAfter()), "2030-01-01T00:00:00Z");
  EXPECT_EQ(full->recipient(), "r");
  EXPECT_EQ(full->inResponseTo(), "_i");
  EXPECT_EQ(full->address(), "::1");
  const auto empty = subject->subjectConfirmations()[1];
  EXPECT_FALSE(empty->notOnOrAfter() || empty->recipient() || empty->inResponseTo());
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

TEST(Signature, Reading) {
  const auto signature = root<SAMLSignature>(
      "<Signature ID='_s'><SignedInfo ID='_i'><CanonicalizationMethod Algorithm='c'/>"
      "<SignatureMethod Algorithm='m'><HMACOutputLength>160</HMACOutputLength></SignatureMethod>"
      "<Reference ID='_r' URI='#a' Type='t'><Transforms><Transform Algorithm='1'/><Transform/>"
      "</Transforms><DigestMethod Algorithm='d'/><DigestValue>YW\nJj</DigestValue></Reference>"
      "</SignedInfo><SignatureValue ID='_v'>YW!</SignatureValue><KeyInfo><KeyName>k</KeyName>"
      "<KeyValue><RSAKeyValue><Modulus>YWJj</Modulus><Exponent>YWJj</Exponent></RSAKeyValue>"
      "<DSAKeyValue><P>YWJj</P><PgenCounter>YWJj</PgenCounter></DSAKeyValue></KeyValue>"
      "<RetrievalMethod URI='u' Type='t'><Transforms><Transform Algorithm='2'/></Transforms>"
      "</RetrievalMethod><X509Data><X509Certificate>YWJj</X509Certificate></X509Data>"
      "<PGPData><PGPKeyID>YWJj</PGPKeyID></PGPData><SPKIData><SPKISexp>YWJj</SPKISexp></SPKIData>"
      "<MgmtData>md</MgmtData></KeyInfo></Signature>");
  const auto info = signature->signedInfo();
  EXPECT_EQ(signature->identifier(), "_s");
  EXPECT_EQ(signature->signatureValue(), std::nullopt);
  EXPECT_EQ(signature->signatureValueId(), "_v");
  EXPECT_TRUE(signature->isValid());
  EXPECT_EQ(info->identifier(), "_i");
  EXPECT_EQ(info->canonicalizationMethod(), "c");
  EXPECT_EQ(info->signatureMethod(), "m");
  EXPECT_EQ(info->signatureMethodLength(), 160.0);
  ASSERT_EQ(info->references().size(), 1u);
  const auto reference = info->references()[0];
  EXPECT_EQ(reference->identifier(), "_r");
  EXPECT_EQ(reference->uri(), "#a");
  EXPECT_EQ(reference->type(), "t");
  EXPECT_EQ(reference->transforms(), Texts{"1"});
  EXPECT_EQ(reference->digestMethod(), "d");
  EXPECT_EQ(reference->digestValue(), kAbc);

  const auto key = signature->keyInfo();
  EXPECT_EQ(key->keyName(), "k");
  EXPECT_EQ(key->mgmtData(), "md");
  EXPECT_EQ(key->keyValue()->rsaKeyValue()->modulus(), kAbc);
  EXPECT_EQ(key->keyValue()->rsaKeyValue()->exponent(), kAbc);
  EXPECT_EQ(key->keyValue()->dsaKeyValue()->p(), kAbc);
  EXPECT_EQ(key->keyValue()->dsaKeyValue()->q(), std::nullopt);
  const auto dsa = root<SAMLDSAKeyValue>(
      "<DSAKeyValue><G>Zw==</G><Y>eQ==</Y><J>ag==</J>"
      "<Seed>cw==</Seed></DSAKeyValue>");
  EXPECT_EQ(dsa->g()->at(0), 'g');
  EXPECT_EQ(dsa->y()->at(0), 'y');
  EXPECT_EQ(dsa->j()->at(0), 'j');
  EXPECT_EQ(dsa->seed()->at(0), 's');
  EXPECT_EQ(root<SAMLKeyInfo>("<KeyInfo ID='_k'/>")->identifier(), "_k");
  EXPECT_EQ(key->keyValue()->dsaKeyValue()->pgenCounter(), kAbc);
  EXPECT_EQ(key->retrievalMethod()->uri(), "u");
  EXPECT_EQ(key->retrievalMethod()->type(), "t");
  EXPECT_EQ(key->retrievalMethod()->transforms(), Texts{"2"});
  // Looked up with a prefix, which no parsed tag name has.
  EXPECT_EQ(key->x509Data()->certificate(), std::nullopt);
  EXPECT_EQ(key->pgpData()->keyId(), std::nullopt);
  EXPECT_EQ(key->spkiSexpData(), std::nullopt);
}

TEST(Signature, NamesWithAPrefixAreFoundInTreesMadeWithThem) {
  const auto child = [](const std::shared_ptr<XMLWrapperElement>& parent, std::string_view name,
                        std::string_view content) {
    auto element = XMLWrapperElement::initWithTagName(name);
    element->setTextContent(std::string(content));
    parent->addChildElement(element);
    return element;
  };
  const auto data = SAMLX509Data::createElement();
  child(data, "ds:X509Certificate", "YWJj");
  const auto serial = child(data, "ds:X509IssuerSerial", "");
  child(serial, "ds:X509IssuerName", "CN=tv");
  child(serial, "dsSerialNumber", "7");
  child(data, "ds:X509SubjectName", "CN=s");
  child(data, "ds:X509SKI", "c2tp");
  child(data, "ds:X509CRL", "YWJj");
  EXPECT_EQ(data->subjectName(), "CN=s");
  EXPECT_EQ(data->ski()->size(), 3u);
  EXPECT_EQ(data->crl(), kAbc);
  const auto pgp = SAMLPGPData::createElement();
  child(pgp, "ds:PGPKeyPacket", "YWJj");
  EXPECT_EQ(pgp->packet(), kAbc);
  EXPECT_EQ(data->certificate(), kAbc);
  EXPECT_EQ(data->issuerName(), "CN=tv");
  EXPECT_EQ(data->serialNumber(), 7.0);
  const auto info = SAMLKeyInfo::createElement();
  child(child(info, "SPKIData", ""), "ds:SPKISexp", "YWJj");
  EXPECT_EQ(info->spkiSexpData(), kAbc);
}

// Every property of every class, with nothing there.
TEST(EmptyElements, AnswerAbsent) {
  const auto response = root<SAMLResponseElement>("<Response Destination='d'/>");
  EXPECT_FALSE(response->identifier() || response->relatedRequest() || response->issueInstant() ||
               response->destination() || response->consent() || response->issuer() ||
               response->signature() || response->status() || response->authnStatement());
  EXPECT_EQ(response->assertions()->size(), 0u);
  EXPECT_EQ(root<SAMLResponseElement>("<Response Decision='d'/>")->destination(), "d");
  const auto status = root<SAMLStatus>("<Status><StatusMessage>m</StatusMessage></Status>");
  EXPECT_FALSE(status->statusCode() || status->statusMessage() || status->statusDetail() ||
               status->status());
  const auto code = root<SAMLStatusCode>("<StatusCode/>");
  EXPECT_FALSE(code->value() || code->statusCode());
  const auto assertion = root<SAMLAssertion>("<Assertion/>");
  EXPECT_FALSE(assertion->identifier() || assertion->issueInstant() || assertion->issuer() ||
               assertion->signature() || assertion->subject() || assertion->conditions() ||
               assertion->advice() || assertion->authentication());
  EXPECT_TRUE(assertion->authorizations().empty() && assertion->samlAttributes().empty());
  const auto statement = root<SAMLAuthNStatement>("<AuthnStatement/>");
  EXPECT_FALSE(statement->authnInstant() || statement->sessionIndex() ||
               statement->sessionNotOnOrAfter() || statement->subjectAddress() ||
               statement->authnContextClassRef());
  const auto attribute = root<SAMLAttribute>("<Attribute/>");
  EXPECT_FALSE(attribute->name() || attribute->nameFormat() || attribute->friendlyName());
  EXPECT_TRUE(attribute->values().empty());
  const auto decision = root<SAMLAuthZDecision>("<AuthzDecisiontStatement/>");
  EXPECT_FALSE(decision->decision() || decision->resource() || decision->evidence());
  EXPECT_TRUE(decision->actions().empty());
  const auto evidence = root<SAMLEvidence>("<Element/>");
  EXPECT_FALSE(evidence->assertion() || evidence->assertionIdRef() || evidence->assertionURIRef());
  const auto signature = root<SAMLSignature>("<Signature/>");
  EXPECT_FALSE(signature->identifier() || signature->signedInfo() || signature->signatureValue() ||
               signature->signatureValueId() || signature->keyInfo());
  EXPECT_TRUE(signature->isValid());
  const auto info = root<SAMLSignedInfo>(
      "<SignedInfo><HMACOutputLength>1</HMACOutputLength>"
      "</SignedInfo>");
  EXPECT_FALSE(info->canonicalizationMethod() || info->signatureMethod() ||
               info->signatureMethodLength());
  const auto key = root<SAMLKeyInfo>("<KeyInfo/>");
  EXPECT_FALSE(key->keyName() || key->keyValue() || key->retrievalMethod() || key->x509Data() ||
               key->pgpData() || key->spkiSexpData() || key->mgmtData());
}

}  // namespace
}  // namespace kestrelink::testing
