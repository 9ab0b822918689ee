#include "tests/support/ElementTable.h"

#include <algorithm>

#include "kestrelink/saml/KestrelinkSAML.h"

#include "tests/support/Shown.h"

namespace kestrelink::testing {
namespace {

/// `calls` is the source text of the values: "e.one(), e.two()".
template <class... Values>
std::string fields(std::string_view calls, const Values&... values) {
  std::string text;
  [[maybe_unused]] const auto add = [&](const std::string& value) {
    text.append(" ").append(calls.substr(2, calls.find('(') - 2)).append("=").append(value);
    calls.remove_prefix(std::min(calls.find("e.", 2), calls.size()));
  };
  (add(shown(values)), ...);
  return text;
}

template <class Class>
constexpr ElementRow row(std::string (*read)(const XMLWrapperElement&)) {
  if constexpr (requires(std::shared_ptr<Class> made) { made = Class::createElement(); }) {
    return {&Class::elementClass,
            [](ErrorOut error) -> std::shared_ptr<XMLWrapperElement> {
              return Class::createElement(error);
            },
            read};
  } else {
    return {&Class::elementClass, nullptr, read};
  }
}

#define ROW(Class, ...)                                                   \
  row<Class>([](const XMLWrapperElement& element) {                       \
    [[maybe_unused]] const auto& e = dynamic_cast<const Class&>(element); \
    return fields(#__VA_ARGS__ __VA_OPT__(, ) __VA_ARGS__);               \
  })

constexpr ElementRow kTable[] = {
    ROW(XMLWrapperElement),
    ROW(SAMLBaseElement),

    // Messages.
    ROW(SAMLResponseElement, e.identifier(), e.issueInstant(), e.destination(), e.consent(),
        e.issuer(), e.signature(), e.relatedRequest(), e.status(), e.assertions(),
        e.authnStatement(), e.assertionMeetsConditions()),
    ROW(SAMLLogoutResponseElement, e.identifier(), e.issueInstant(), e.destination(), e.consent(),
        e.issuer(), e.signature(), e.relatedRequest(), e.status(), e.assertions(),
        e.authnStatement(), e.assertionMeetsConditions()),
    ROW(SAMLAuthNRequestElement, e.identifier(), e.issueInstant(), e.destination(), e.consent(),
        e.issuer(), e.signature(), e.providerName(), e.forceAuthN(), e.isPassive(), e.subject(),
        e.nameIdPolicy(), e.conditions(), e.context(), e.scoping()),
    ROW(SAMLAttributeQueryElement, e.identifier(), e.issueInstant(), e.destination(), e.consent(),
        e.channelId(), e.signature(), e.subject(), e.samlAttributes()),
    ROW(SAMLAuthZDecisionQueryElement, e.identifier(), e.issueInstant(), e.destination(),
        e.consent(), e.channelId(), e.signature(), e.resource(), e.subject(), e.actions(),
        e.evidence()),
    ROW(SAMLLogoutRequestElement, e.identifier(), e.issueInstant(), e.destination(), e.consent(),
        e.issuer(), e.signature(), e.reason(), e.notOnOrAfter(), e.nameId(), e.sessionIndex()),

    // Parts of an authentication request.
    ROW(SAMLNameIdPolicy, e.format(), e.allowCreation()),
    ROW(SAMLRequestedAuthNContext, e.comparison(), e.classRef(), e.declRef()),
    ROW(SAMLIDPEntry, e.providerId(), e.name(), e.loc()),
    ROW(SAMLScoping, e.requesterIds(), e.proxyCount(), e.getComplete(), e.idpList()),

    // Status and assertions.
    ROW(SAMLStatusCode, e.value(), e.statusCode()),
    ROW(SAMLStatus, e.statusCode(), e.status(), e.statusMessage(), e.statusDetail()),
    ROW(SAMLAssertion, e.identifier(), e.issueInstant(), e.issuer(), e.subject(), e.advice(),
        e.conditions(), e.signature(), e.authentication(), e.authorizations(), e.samlAttributes(),
        e.isValid(), e.meetsConditions()),
    ROW(SAMLSubject, e.nameId(), e.subjectConfirmations()),
    ROW(SAMLNameId, e.spProvidedId(), e.nameQualifier(), e.spNameQualifier(), e.format()),
    ROW(SAMLSubjectConfirmation, e.method(), e.nameId(), e.notBefore(), e.notOnOrAfter(),
        e.recipient(), e.inResponseTo(), e.address()),
    ROW(SAMLConditions, e.notBefore(), e.notOnOrAfter(), e.audienceRestrictions(), e.oneTimeUse(),
        e.proxyRestrictionAudienceCount(), e.proxyRestrictions(), e.conditions(),
        e.assertionMeetsConditions()),
    ROW(SAMLAuthNStatement, e.sessionIndex(), e.authnInstant(), e.sessionNotOnOrAfter(),
        e.subjectAddress(), e.subjectDNSName(), e.authnContextDecl(), e.authnContextDeclRef(),
        e.authnContextClassRef(), e.authenticatingAuthority(), e.isValid()),
    ROW(SAMLAttribute, e.name(), e.nameFormat(), e.friendlyName(), e.values()),
    ROW(SAMLAuthZDecision, e.resource(), e.decision(), e.actions(), e.evidence()),
    ROW(SAMLEvidence, e.assertionIdRef(), e.assertionURIRef(), e.assertion()),
    ROW(SAMLAdvice, e.assertionIDRef(), e.assertionURIRef(), e.assertion()),

    // Signatures.
    ROW(SAMLSignature, e.identifier(), e.signedInfo(), e.signatureValue(), e.signatureValueId(),
        e.keyInfo(), e.isValid()),
    ROW(SAMLSignedInfo, e.identifier(), e.canonicalizationMethod(), e.signatureMethod(),
        e.signatureMethodLength(), e.references()),
    ROW(SAMLSignatureReference, e.identifier(), e.uri(), e.type(), e.transforms(), e.digestMethod(),
        e.digestValue()),
    ROW(SAMLKeyInfo, e.identifier(), e.keyName(), e.keyValue(), e.retrievalMethod(), e.x509Data(),
        e.pgpData(), e.spkiSexpData(), e.mgmtData()),
    ROW(SAMLSignatureKeyValue, e.dsaKeyValue(), e.rsaKeyValue()),
    ROW(SAMLRSAKeyValue, e.modulus(), e.exponent()),
    ROW(SAMLDSAKeyValue, e.p(), e.q(), e.g(), e.y(), e.j(), e.seed(), e.pgenCounter()),
    ROW(SAMLKeyRetrievalMethod, e.uri(), e.type(), e.transforms()),
    ROW(SAMLX509Data, e.issuerName(), e.serialNumber(), e.ski(), e.subjectName(), e.certificate(),
        e.crl()),
    ROW(SAMLPGPData, e.keyId(), e.packet()),
};

}  // namespace

std::span<const ElementRow> elementTable() { return kTable; }

}  // namespace kestrelink::testing
