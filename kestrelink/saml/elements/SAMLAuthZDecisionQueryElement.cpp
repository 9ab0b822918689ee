#include "kestrelink/saml/elements/SAMLAuthZDecisionQueryElement.h"

#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/saml/elements/SAMLRequestParts.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLAuthZDecisionQueryElement::elementClass{
    "SAMLAuthZDecisionQueryElement", &makeElementInstance<SAMLAuthZDecisionQueryElement>};

std::shared_ptr<SAMLAuthZDecisionQueryElement> SAMLAuthZDecisionQueryElement::createElement(
    ErrorOut /*error*/) {
  auto element = makeElement<SAMLAuthZDecisionQueryElement>(
      kAuthzDecisionQueryElementName, protocolNamespaceOnly(),
      {kIssuerElementName, kSignatureElementName, kSubjectElementName, kActionElementName,
       kEvidenceElementName});
  stampRequest(*element, "_");
  return element;
}

std::optional<std::string> SAMLAuthZDecisionQueryElement::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<SAMLDate> SAMLAuthZDecisionQueryElement::issueInstant() const {
  return attributeDate(kIssueInstantAttributeName);
}
std::optional<std::string> SAMLAuthZDecisionQueryElement::destination() const {
  return attributeText(kDestinationAttributeName);
}
void SAMLAuthZDecisionQueryElement::setDestination(std::string_view destination) {
  setAttributeWithName(kDestinationAttributeName, destination);
}
std::optional<std::string> SAMLAuthZDecisionQueryElement::consent() const {
  return attributeText(kConsentAttributeName);
}
std::optional<std::string> SAMLAuthZDecisionQueryElement::resource() const {
  return attributeText(kResourceAttributeName);
}
void SAMLAuthZDecisionQueryElement::setResource(std::optional<std::string_view> resource) {
  setAttributeWithName(kResourceAttributeName, resource);
}
std::optional<std::string> SAMLAuthZDecisionQueryElement::channelId() const {
  return childText(kIssuerElementName);
}
void SAMLAuthZDecisionQueryElement::setChannelId(std::string_view channelId) {
  setIssuerOf(*this, channelId);
}
std::shared_ptr<SAMLSignature> SAMLAuthZDecisionQueryElement::signature() const {
  return child<SAMLSignature>(kSignatureElementName);
}
std::shared_ptr<SAMLSubject> SAMLAuthZDecisionQueryElement::subject() const {
  return child<SAMLSubject>(kSubjectElementName);
}
void SAMLAuthZDecisionQueryElement::setSubject(const std::shared_ptr<SAMLSubject>& subject) {
  addChildElement(subject);
}
XMLWrapperElement::List SAMLAuthZDecisionQueryElement::actions() const {
  return getElementsByTagName(kActionElementName);
}
void SAMLAuthZDecisionQueryElement::addAction(std::string_view action) {
  addChildElement(textElement(kActionElementName, action),
                  firstElementByTagName(kEvidenceElementName));
}
std::shared_ptr<SAMLEvidence> SAMLAuthZDecisionQueryElement::evidence() const {
  return child<SAMLEvidence>(kEvidenceElementName);
}
void SAMLAuthZDecisionQueryElement::setEvidence(const std::shared_ptr<SAMLEvidence>& evidence) {
  replaceOrAdd(*this, kEvidenceElementName, evidence);
}

}  // namespace kestrelink
