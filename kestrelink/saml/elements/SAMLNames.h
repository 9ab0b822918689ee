// Names of elements and attributes, status codes and other fixed values that the SAML classes look
// up, write or register. Some are defined and not used.
//
// Some names are not the standard's ("NameId", "AuthzDecisiontStatement", "Element" for evidence),
// and some have a prefix, which parsed tag names never have when it is declared. Kept as they are:
// providers and clients have been built against them. The standard's names are in
// kestrelink/standard/.
#pragma once

#include <initializer_list>
#include <string_view>

namespace kestrelink {

// Elements; the name is that of the constant, apart from case.
inline constexpr std::string_view kActionElementName = "Action";
inline constexpr std::string_view kAdviceElementName = "Advice";
inline constexpr std::string_view kAssertionElementName = "Assertion";
inline constexpr std::string_view kAssertionURIRefElementName = "AssertionURIRef";
inline constexpr std::string_view kAttributeElementName = "Attribute";
inline constexpr std::string_view kAttributeQueryElementName = "AttributeQuery";
inline constexpr std::string_view kAttributeStatementElementName = "AttributeStatement";
inline constexpr std::string_view kAttributeValueElementName = "AttributeValue";
inline constexpr std::string_view kAudienceElementName = "Audience";
inline constexpr std::string_view kAudienceRestrictionElementName = "AudienceRestriction";
inline constexpr std::string_view kAuthNContextElementName = "AuthnContext";
inline constexpr std::string_view kAuthNContextClassRefElementName = "AuthnContextClassRef";
inline constexpr std::string_view kAuthNContextDeclElementName = "AuthnContextDecl";
inline constexpr std::string_view kAuthNContextDeclRefElementName = "AuthnContextDeclRef";
inline constexpr std::string_view kAuthNRequestElementName = "AuthnRequest";
inline constexpr std::string_view kAuthNStatementElementName = "AuthnStatement";
inline constexpr std::string_view kAuthzDecisionQueryElementName = "AuthzDecisionQuery";
inline constexpr std::string_view kCanonicalizationMethodElementName = "CanonicalizationMethod";
inline constexpr std::string_view kConditionElementName = "Condition";
inline constexpr std::string_view kConditionsElementName = "Conditions";
inline constexpr std::string_view kDigestMethodElementName = "DigestMethod";
inline constexpr std::string_view kDigestValueElementName = "DigestValue";
inline constexpr std::string_view kDSAKeyValueElementName = "DSAKeyValue";
inline constexpr std::string_view kExponentElementName = "Exponent";
inline constexpr std::string_view kGetCompleteElementName = "GetComplete";
inline constexpr std::string_view kIDPEntryElementName = "IDPEntry";
inline constexpr std::string_view kIDPListElementName = "IDPList";
inline constexpr std::string_view kIssuerElementName = "Issuer";
inline constexpr std::string_view kKeyInfoElementName = "KeyInfo";
inline constexpr std::string_view kKeyNameElementName = "KeyName";
inline constexpr std::string_view kKeyValueElementName = "KeyValue";
inline constexpr std::string_view kLogoutRequestElementName = "LogoutRequest";
inline constexpr std::string_view kLogoutResponseElementName = "LogoutResponse";
inline constexpr std::string_view kMgmtDataElementName = "MgmtData";
inline constexpr std::string_view kModulusElementName = "Modulus";
inline constexpr std::string_view kNameIdElementName = "NameId";
inline constexpr std::string_view kNameIdPolicyElementName = "NameIdPolicy";
inline constexpr std::string_view kOneTimeUseElementName = "OneTimeUse";
inline constexpr std::string_view kPGPDataElementName = "PGPData";
inline constexpr std::string_view kReferenceElementName = "Reference";
inline constexpr std::string_view kRequestedAuthNContextElementName = "RequestedAuthnContext";
inline constexpr std::string_view kResponseElementName = "Response";
inline constexpr std::string_view kRetrievalMethodElementName = "RetrievalMethod";
inline constexpr std::string_view kRSAKeyValueElementName = "RSAKeyValue";
inline constexpr std::string_view kScopingElementName = "Scoping";
inline constexpr std::string_view kSessionIndexElementName = "SessionIndex";
inline constexpr std::string_view kSignatureElementName = "Signature";
inline constexpr std::string_view kSignatureMethodElementName = "SignatureMethod";
inline constexpr std::string_view kSignatureValueElementName = "SignatureValue";
inline constexpr std::string_view kSignedInfoElementName = "SignedInfo";
inline constexpr std::string_view kSPKIDataElementName = "SPKIData";
inline constexpr std::string_view kStatusElementName = "Status";
inline constexpr std::string_view kStatusCodeElementName = "StatusCode";
inline constexpr std::string_view kSubjectElementName = "Subject";
inline constexpr std::string_view kSubjectConfirmationElementName = "SubjectConfirmation";
inline constexpr std::string_view kSubjectConfirmationDataElementName = "SubjectConfirmationData";
inline constexpr std::string_view kSubjectLocalityElementName = "SubjectLocality";
inline constexpr std::string_view kTransformElementName = "Transform";
inline constexpr std::string_view kTransformsElementName = "Transforms";
inline constexpr std::string_view kX509DataElementName = "X509Data";

// Elements whose name differs from the constant's.
inline constexpr std::string_view kEvidenceElementName = "Element";
inline constexpr std::string_view kAuthZDecisionStatementElementName = "AuthzDecisiontStatement";
inline constexpr std::string_view kAuthenticaticatingAuthorityElementName =
    "AuthenticatingAuthority";
inline constexpr std::string_view kAssertionIdRefElementName = "AssertionIDRef";
inline constexpr std::string_view kRequesterIdElementName = "RequesterID";
inline constexpr std::string_view kProxyRestrictionElementName = "saml:ProxyRestriction";
inline constexpr std::string_view kAuthnContextClassRefElementName = "saml:AuthnContextClassRef";
inline constexpr std::string_view kAuthnContextDeclRefElementName = "saml:AuthnContextDeclRef";
inline constexpr std::string_view kStatusMessageElementName = "samlp:StatusMessage";
inline constexpr std::string_view kStatusDetailElementName = "samlp:StatusDetail";
inline constexpr std::string_view kSAMLPGPKeyIdElementName = "ds:PGPKeyID";
inline constexpr std::string_view kSAMLPGPKeyPacketElementName = "ds:PGPKeyPacket";
inline constexpr std::string_view kSAMLSPKISexpElementName = "ds:SPKISexp";
inline constexpr std::string_view kSAMLX509IssuerSerialElementName = "ds:X509IssuerSerial";
inline constexpr std::string_view kSAMLX509IssuerNameElementName = "ds:X509IssuerName";
inline constexpr std::string_view kSAMLX509SerialNumberElementName = "dsSerialNumber";
inline constexpr std::string_view kSAMLX509SKIElementName = "ds:X509SKI";
inline constexpr std::string_view kSAMLX509SubjectNameElementName = "ds:X509SubjectName";
inline constexpr std::string_view kSAMLX509CertificateElementName = "ds:X509Certificate";
inline constexpr std::string_view kSAMLX509CRLElementName = "ds:X509CRL";
inline constexpr std::string_view kDSAPElementName = "P";
inline constexpr std::string_view kDSAQElementName = "Q";
inline constexpr std::string_view kDSAGElementName = "G";
inline constexpr std::string_view kDSAYElementName = "Y";
inline constexpr std::string_view kDSAJElementName = "J";
inline constexpr std::string_view kDSASeedElementName = "Seed";
inline constexpr std::string_view kDSAPgenCounterElementName = "PgenCounter";
inline constexpr std::string_view kSignatureHMACOutputLength = "HMACOutputLength";

// Attributes; the name is that of the constant, apart from case.
inline constexpr std::string_view kAddressAttributeName = "Address";
inline constexpr std::string_view kAlgorithmAttributeName = "Algorithm";
inline constexpr std::string_view kAllowCreateAttributeName = "AllowCreate";
inline constexpr std::string_view kComparisonAttributeName = "Comparison";
inline constexpr std::string_view kConsentAttributeName = "Consent";
inline constexpr std::string_view kCountAttributeName = "Count";
inline constexpr std::string_view kDecisionAttributeName = "Decision";
inline constexpr std::string_view kDestinationAttributeName = "Destination";
inline constexpr std::string_view kDNSNameAttributeName = "DNSName";
inline constexpr std::string_view kFormatAttributeName = "Format";
inline constexpr std::string_view kFriendlyNameAttributeName = "FriendlyName";
inline constexpr std::string_view kInResponseToAttributeName = "InResponseTo";
inline constexpr std::string_view kIsPassiveAttributeName = "IsPassive";
inline constexpr std::string_view kIssueInstantAttributeName = "IssueInstant";
inline constexpr std::string_view kLocAttributeName = "Loc";
inline constexpr std::string_view kMethodAttributeName = "Method";
inline constexpr std::string_view kNameAttributeName = "Name";
inline constexpr std::string_view kNameFormatAttributeName = "NameFormat";
inline constexpr std::string_view kNameQualifierAttributeName = "NameQualifier";
inline constexpr std::string_view kNotBeforeAttributeName = "NotBefore";
inline constexpr std::string_view kNotOnOrAfterAttributeName = "NotOnOrAfter";
inline constexpr std::string_view kProviderNameAttributeName = "ProviderName";
inline constexpr std::string_view kProxyCountAttributeName = "ProxyCount";
inline constexpr std::string_view kReasonAttributeName = "Reason";
inline constexpr std::string_view kRecipientAttributeName = "Recipient";
inline constexpr std::string_view kResourceAttributeName = "Resource";
inline constexpr std::string_view kSessionIndexAttributeName = "SessionIndex";
inline constexpr std::string_view kSPNameQualifierAttributeName = "SPNameQualifier";
inline constexpr std::string_view kTypeAttributeName = "Type";
inline constexpr std::string_view kURIAttributeName = "URI";
inline constexpr std::string_view kValueAttributeName = "Value";
inline constexpr std::string_view kVersionAttributeName = "Version";

// Attributes whose name differs from the constant's.
inline constexpr std::string_view kIdentifierAttributeName = "ID";
inline constexpr std::string_view kProviderIdAttributeName = "ProviderID";
inline constexpr std::string_view kSPProvidedIdAttributeName = "SPProvidedID";
inline constexpr std::string_view kSessiontNotOnOrAfterAttributeName = "SessionNotOnOrAfter";
inline constexpr std::string_view kAuthNInstantAttributeName = "AuthnInstant";
inline constexpr std::string_view kForceAuthNAttributeName = "ForceAuthn";

// Values.
inline constexpr std::string_view kVersionAttributeValue = "2.0";
inline constexpr std::string_view kSAMLAttributePropertyUsername = "userID";
inline constexpr std::string_view kNameIdPolicyTransientValue =
    "urn:oasis:names:tc:SAML:2.0:nameid-format:transient";
inline constexpr std::string_view kNameIdPolicyPersistentValue =
    "urn:oasis:names:tc:SAML:2.0:nameid-format:persistent";
inline constexpr std::string_view kNameIdPolicyUnspecifiedValue =
    "urn:oasis:names:tc:SAML:1.1:nameid-format:unspecified";
inline constexpr std::string_view kNameIdPolicyEmailAddressValue =
    "urn:oasis:names:tc:SAML:1.1:nameid-format:emailAddress";
inline constexpr std::string_view kSAMLDecisionValuePermit = "Permit";
inline constexpr std::string_view kSAMLDecisionValueDeny = "Deny";
inline constexpr std::string_view kSAMLDecisionValueIndeterminate = "Indeterminate";

// Status codes (SAML 2.0 core, section 3.2.2.2). The last is a television provider's own: show the
// sign-in user interface.
inline constexpr std::string_view kSAMLStatusCodeSuccess =
    "urn:oasis:names:tc:SAML:2.0:status:Success";
inline constexpr std::string_view kSAMLStatusCodeRequestorError =
    "urn:oasis:names:tc:SAML:2.0:status:Requester";
inline constexpr std::string_view kSAMLStatusCodeResponderError =
    "urn:oasis:names:tc:SAML:2.0:status:Responder";
inline constexpr std::string_view kSAMLStatusCodeVersionMismatch =
    "urn:oasis:names:tc:SAML:2.0:status:VersionMismatch";
inline constexpr std::string_view kSAMLStatusCodeAuthnFailed =
    "urn:oasis:names:tc:SAML:2.0:status:AuthnFailed";
inline constexpr std::string_view kSAMLStatusCodeInvalidAttrNameOrValue =
    "urn:oasis:names:tc:SAML:2.0:status:InvalidAttrNameOrValue";
inline constexpr std::string_view kSAMLStatusCodeInvalidNameIDPolicy =
    "urn:oasis:names:tc:SAML:2.0:status:InvalidNameIDPolicy";
inline constexpr std::string_view kSAMLStatusCodeNoAuthnContext =
    "urn:oasis:names:tc:SAML:2.0:status:NoAuthnContext";
inline constexpr std::string_view kSAMLStatusCodeNoAvailableIDP =
    "urn:oasis:names:tc:SAML:2.0:status:NoAvailableIDP";
inline constexpr std::string_view kSAMLStatusCodeNoPassive =
    "urn:oasis:names:tc:SAML:2.0:status:NoPassive";
inline constexpr std::string_view kSAMLStatusCodePartialLogout =
    "urn:oasis:names:tc:SAML:2.0:status:PartialLogout";
inline constexpr std::string_view kSAMLStatusCodeProxyCountExceeded =
    "urn:oasis:names:tc:SAML:2.0:status:ProxyCountExceeded";
inline constexpr std::string_view kSAMLStatusCodeRequestDenied =
    "urn:oasis:names:tc:SAML:2.0:status:RequestDenied";
inline constexpr std::string_view kSAMLStatusCodeRequestUnsupported =
    "urn:oasis:names:tc:SAML:2.0:status:RequestUnsupported";
inline constexpr std::string_view kSAMLStatusCodeResourceNotRecognized =
    "urn:oasis:names:tc:SAML:2.0:status:ResourceNotRecognized";
inline constexpr std::string_view kSAMLStatusCodeTooManyResponses =
    "urn:oasis:names:tc:SAML:2.0:status:TooManyResponses";
inline constexpr std::string_view kSAMLStatusCodeMSORequestsUI = "urn:norvane:status:MSORequestsUI";

// The order in which the children of an assertion and of an authentication statement are written.
inline constexpr std::initializer_list<std::string_view> kAssertionSequence = {
    kIssuerElementName,
    kSignatureElementName,
    kSubjectElementName,
    kConditionsElementName,
    kAdviceElementName,
    kAuthNStatementElementName,
    kAuthZDecisionStatementElementName,
    kAttributeStatementElementName};

}  // namespace kestrelink
