#include <memory>
#include <string>
#include <vector>

#include <libxml/tree.h>

#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/saml/elements/SAMLAttributeQueryElement.h"
#include "kestrelink/saml/elements/SAMLAuthNRequestElement.h"
#include "kestrelink/saml/elements/SAMLAuthZDecisionQueryElement.h"
#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/saml/elements/SAMLEvidence.h"
#include "kestrelink/saml/elements/SAMLKeyInfo.h"
#include "kestrelink/saml/elements/SAMLLogoutRequestElement.h"
#include "kestrelink/xml/libxml/DetachedNode.h"

#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using namespace kestrelink;

constexpr std::size_t kMostBytes = 4000;  // the work grows with elements times depth times classes

constexpr const XMLWrapperElementClass* kClasses[] = {
    &XMLWrapperElement::elementClass,
    &SAMLBaseElement::elementClass,
    &SAMLAdvice::elementClass,
    &SAMLAssertion::elementClass,
    &SAMLAttribute::elementClass,
    &SAMLAttributeQueryElement::elementClass,
    &SAMLAuthNRequestElement::elementClass,
    &SAMLAuthNStatement::elementClass,
    &SAMLAuthZDecision::elementClass,
    &SAMLAuthZDecisionQueryElement::elementClass,
    &SAMLConditions::elementClass,
    &SAMLDSAKeyValue::elementClass,
    &SAMLEvidence::elementClass,
    &SAMLIDPEntry::elementClass,
    &SAMLKeyInfo::elementClass,
    &SAMLKeyRetrievalMethod::elementClass,
    &SAMLLogoutRequestElement::elementClass,
    &SAMLLogoutResponseElement::elementClass,
    &SAMLNameId::elementClass,
    &SAMLNameIdPolicy::elementClass,
    &SAMLPGPData::elementClass,
    &SAMLRequestedAuthNContext::elementClass,
    &SAMLResponseElement::elementClass,
    &SAMLRSAKeyValue::elementClass,
    &SAMLScoping::elementClass,
    &SAMLSignature::elementClass,
    &SAMLSignatureKeyValue::elementClass,
    &SAMLSignatureReference::elementClass,
    &SAMLSignedInfo::elementClass,
    &SAMLStatus::elementClass,
    &SAMLStatusCode::elementClass,
    &SAMLSubject::elementClass,
    &SAMLSubjectConfirmation::elementClass,
    &SAMLX509Data::elementClass,
};

/// Calls the operations that take nothing, if the element is of that class.
template <class Element, class... Operations>
void ask(XMLWrapperElement& element, Operations... operations) {
  if (auto* const typed = dynamic_cast<Element*>(&element)) {
    (static_cast<void>((typed->*operations)()), ...);
  }
}

/// The same for those that may fail with an error.
template <class Element, class... Operations>
void askWithError(XMLWrapperElement& element, Operations... operations) {
  if (auto* const typed = dynamic_cast<Element*>(&element)) {
    std::optional<ErrorInfo> error;
    (static_cast<void>((typed->*operations)(&error)), ...);
  }
}

/// Calls the operations that take a text.
template <class Element, class... Operations>
void tell(XMLWrapperElement& element, std::string_view text, Operations... operations) {
  if (auto* const typed = dynamic_cast<Element*>(&element)) {
    (static_cast<void>((typed->*operations)(text)), ...);
  }
}

void askParts(XMLWrapperElement& e) {
  ask<SAMLNameId>(e, &SAMLNameId::nameQualifier, &SAMLNameId::spNameQualifier, &SAMLNameId::format,
                  &SAMLNameId::spProvidedId);
  using Confirmation = SAMLSubjectConfirmation;
  ask<Confirmation>(e, &Confirmation::method, &Confirmation::nameId, &Confirmation::notBefore,
                    &Confirmation::notOnOrAfter, &Confirmation::recipient,
                    &Confirmation::inResponseTo, &Confirmation::address);
  ask<SAMLSubject>(e, &SAMLSubject::nameId, &SAMLSubject::subjectConfirmations);
  ask<SAMLConditions>(e, &SAMLConditions::notBefore, &SAMLConditions::notOnOrAfter,
                      &SAMLConditions::audienceRestrictions, &SAMLConditions::oneTimeUse,
                      &SAMLConditions::proxyRestrictionAudienceCount,
                      &SAMLConditions::proxyRestrictions, &SAMLConditions::conditions);
  askWithError<SAMLConditions>(e, &SAMLConditions::assertionMeetsConditions);
  ask<SAMLAttribute>(e, &SAMLAttribute::name, &SAMLAttribute::nameFormat,
                     &SAMLAttribute::friendlyName, &SAMLAttribute::values);
  ask<SAMLEvidence>(e, &SAMLEvidence::assertionIdRef, &SAMLEvidence::assertionURIRef,
                    &SAMLEvidence::assertion);
  ask<SAMLAdvice>(e, &SAMLAdvice::assertion, &SAMLAdvice::assertionIDRef,
                  &SAMLAdvice::assertionURIRef);
  using Statement = SAMLAuthNStatement;
  ask<Statement>(e, &Statement::authnInstant, &Statement::sessionIndex,
                 &Statement::sessionNotOnOrAfter, &Statement::subjectAddress,
                 &Statement::subjectDNSName, &Statement::authnContextDecl,
                 &Statement::authnContextDeclRef, &Statement::authnContextClassRef,
                 &Statement::authenticatingAuthority, &Statement::isValid);
  ask<SAMLAuthZDecision>(e, &SAMLAuthZDecision::decision, &SAMLAuthZDecision::resource,
                         &SAMLAuthZDecision::actions, &SAMLAuthZDecision::evidence);
}

void askAnswers(XMLWrapperElement& e) {
  ask<SAMLStatusCode>(e, &SAMLStatusCode::value, &SAMLStatusCode::statusCode);
  ask<SAMLStatus>(e, &SAMLStatus::statusCode, &SAMLStatus::statusMessage, &SAMLStatus::statusDetail,
                  &SAMLStatus::status);
  ask<SAMLAssertion>(e, &SAMLAssertion::identifier, &SAMLAssertion::issueInstant,
                     &SAMLAssertion::issuer, &SAMLAssertion::signature, &SAMLAssertion::subject,
                     &SAMLAssertion::conditions, &SAMLAssertion::advice,
                     &SAMLAssertion::authentication, &SAMLAssertion::authorizations,
                     &SAMLAssertion::samlAttributes);
  askWithError<SAMLAssertion>(e, &SAMLAssertion::isValid, &SAMLAssertion::meetsConditions);
  using Response = SAMLResponseElement;
  ask<Response>(e, &Response::identifier, &Response::relatedRequest, &Response::issueInstant,
                &Response::destination, &Response::consent, &Response::issuer, &Response::signature,
                &Response::status, &Response::assertions, &Response::authnStatement);
  askWithError<Response>(e, &Response::assertionMeetsConditions);
}

void askSignature(XMLWrapperElement& e) {
  using Reference = SAMLSignatureReference;
  ask<Reference>(e, &Reference::identifier, &Reference::uri, &Reference::type,
                 &Reference::transforms, &Reference::digestMethod, &Reference::digestValue);
  ask<SAMLSignedInfo>(e, &SAMLSignedInfo::identifier, &SAMLSignedInfo::canonicalizationMethod,
                      &SAMLSignedInfo::signatureMethod, &SAMLSignedInfo::signatureMethodLength,
                      &SAMLSignedInfo::references);
  ask<SAMLSignature>(e, &SAMLSignature::identifier, &SAMLSignature::signedInfo,
                     &SAMLSignature::signatureValue, &SAMLSignature::signatureValueId,
                     &SAMLSignature::keyInfo, &SAMLSignature::isValid);
  using Dsa = SAMLDSAKeyValue;
  ask<Dsa>(e, &Dsa::p, &Dsa::q, &Dsa::g, &Dsa::y, &Dsa::j, &Dsa::seed, &Dsa::pgenCounter);
  ask<SAMLRSAKeyValue>(e, &SAMLRSAKeyValue::modulus, &SAMLRSAKeyValue::exponent);
  ask<SAMLSignatureKeyValue>(e, &SAMLSignatureKeyValue::dsaKeyValue,
                             &SAMLSignatureKeyValue::rsaKeyValue);
  using X509 = SAMLX509Data;
  ask<X509>(e, &X509::issuerName, &X509::serialNumber, &X509::ski, &X509::subjectName,
            &X509::certificate, &X509::crl);
  ask<SAMLPGPData>(e, &SAMLPGPData::keyId, &SAMLPGPData::packet);
  ask<SAMLKeyRetrievalMethod>(e, &SAMLKeyRetrievalMethod::uri, &SAMLKeyRetrievalMethod::type,
                              &SAMLKeyRetrievalMethod::transforms);
  using Info = SAMLKeyInfo;
  ask<Info>(e, &Info::identifier, &Info::keyName, &Info::keyValue, &Info::retrievalMethod,
            &Info::x509Data, &Info::pgpData, &Info::spkiSexpData, &Info::mgmtData);
}

void askRequests(XMLWrapperElement& e) {
  ask<SAMLNameIdPolicy>(e, &SAMLNameIdPolicy::format, &SAMLNameIdPolicy::allowCreation);
  using Context = SAMLRequestedAuthNContext;
  ask<Context>(e, &Context::comparison, &Context::classRef, &Context::declRef);
  ask<SAMLIDPEntry>(e, &SAMLIDPEntry::providerId, &SAMLIDPEntry::name, &SAMLIDPEntry::loc);
  ask<SAMLScoping>(e, &SAMLScoping::requesterIds, &SAMLScoping::proxyCount,
                   &SAMLScoping::getComplete, &SAMLScoping::idpList);
  using AuthN = SAMLAuthNRequestElement;
  ask<AuthN>(e, &AuthN::identifier, &AuthN::issueInstant, &AuthN::destination, &AuthN::consent,
             &AuthN::forceAuthN, &AuthN::isPassive, &AuthN::providerName, &AuthN::issuer,
             &AuthN::signature, &AuthN::subject, &AuthN::nameIdPolicy, &AuthN::conditions,
             &AuthN::context, &AuthN::scoping);
  using Query = SAMLAttributeQueryElement;
  ask<Query>(e, &Query::identifier, &Query::issueInstant, &Query::destination, &Query::consent,
             &Query::channelId, &Query::signature, &Query::subject, &Query::samlAttributes);
  using AuthZ = SAMLAuthZDecisionQueryElement;
  ask<AuthZ>(e, &AuthZ::identifier, &AuthZ::issueInstant, &AuthZ::destination, &AuthZ::consent,
             &AuthZ::resource, &AuthZ::channelId, &AuthZ::signature, &AuthZ::subject,
             &AuthZ::actions, &AuthZ::evidence);
  using Logout = SAMLLogoutRequestElement;
  ask<Logout>(e, &Logout::identifier, &Logout::issueInstant, &Logout::destination, &Logout::consent,
              &Logout::reason, &Logout::notOnOrAfter, &Logout::issuer, &Logout::signature,
              &Logout::nameId, &Logout::sessionIndex);
}

void tellAll(XMLWrapperElement& e, std::string_view text) {
  tell<SAMLAttribute>(e, text, &SAMLAttribute::setName, &SAMLAttribute::addAttributeValue);
  tell<SAMLAdvice>(e, text, &SAMLAdvice::setAssertionIDRef, &SAMLAdvice::setAssertionURIRef);
  tell<SAMLScoping>(e, text, &SAMLScoping::addRequesterId);
  tell<SAMLAssertion>(e, text, &SAMLAssertion::isValidForRequestor,
                      &SAMLAssertion::authorizationForResource);
  using AuthN = SAMLAuthNRequestElement;
  tell<AuthN>(e, text, &AuthN::setDestination, &AuthN::setProviderName, &AuthN::setIssuer);
  tell<SAMLAttributeQueryElement>(e, text, &SAMLAttributeQueryElement::setChannelId);
  using AuthZ = SAMLAuthZDecisionQueryElement;
  tell<AuthZ>(e, text, &AuthZ::setDestination, &AuthZ::setChannelId, &AuthZ::addAction);
  using Logout = SAMLLogoutRequestElement;
  tell<Logout>(e, text, &Logout::setDestination, &Logout::setReason, &Logout::setIssuer,
               &Logout::setSessionIndex);
}

void askEverything(XMLWrapperElement& element) {
  askParts(element);
  askAnswers(element);
  askSignature(element);
  askRequests(element);
}

void walk(const XmlNodeRef& ref, const std::shared_ptr<XMLWrapperQuery>& query,
          std::string_view text) {
  for (const XMLWrapperElementClass* const elementClass : kClasses) {
    const auto element = XMLWrapperElement::initWithNode(*elementClass, ref, query);
    require(&element->dynamicClass() == elementClass, "an element knows its class");
    askEverything(*element);
    tellAll(*element, text);
    askEverything(*element);
    static_cast<void>(element->xmlString());
  }
  for (xmlNode* child = ref.node->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) walk({ref.doc, child}, query, text);
  }
}

}  // namespace

void everyAccessor(std::string_view input) {
  registerSAMLElementClasses();
  if (input.size() > kMostBytes) return;
  const auto doc = XMLWrapperDoc::initWithData(std::make_shared<const std::string>(input), nullptr);
  if (!doc) return;
  const std::shared_ptr<_xmlDoc> borrowed(doc, doc->docPtr());
  walk({borrowed, doc->nodePtr()}, doc->query(), input.substr(input.size() / 2, 40));
}

}  // namespace fuzz
