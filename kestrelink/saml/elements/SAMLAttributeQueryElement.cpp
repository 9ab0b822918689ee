#include "kestrelink/saml/elements/SAMLAttributeQueryElement.h"

#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/saml/elements/SAMLRequestParts.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLAttributeQueryElement::elementClass{
    "SAMLAttributeQueryElement", &makeElementInstance<SAMLAttributeQueryElement>};

std::shared_ptr<SAMLAttributeQueryElement> SAMLAttributeQueryElement::createElement(
    ErrorOut /*error*/) {
  auto element = makeElement<SAMLAttributeQueryElement>(
      kAttributeQueryElementName, protocolNamespaceOnly(),
      {kIssuerElementName, kSignatureElementName, kSubjectElementName, kAttributeElementName});
  stampRequest(*element, "_");
  element->setNamespace(SAMLAssertionNamespace());  // the query itself is in the protocol namespace
  return element;
}

std::optional<std::string> SAMLAttributeQueryElement::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<SAMLDate> SAMLAttributeQueryElement::issueInstant() const {
  return attributeDate(kIssueInstantAttributeName);
}
std::optional<std::string> SAMLAttributeQueryElement::destination() const {
  return attributeText(kDecisionAttributeName);
}
std::optional<std::string> SAMLAttributeQueryElement::consent() const {
  return attributeText(kConsentAttributeName);
}
std::optional<std::string> SAMLAttributeQueryElement::channelId() const {
  return childText(kIssuerElementName);
}
void SAMLAttributeQueryElement::setChannelId(std::string_view channelId) {
  setIssuerOf(*this, channelId);
}
std::shared_ptr<SAMLSignature> SAMLAttributeQueryElement::signature() const {
  return child<SAMLSignature>(kSignatureElementName);
}
std::shared_ptr<SAMLSubject> SAMLAttributeQueryElement::subject() const {
  return child<SAMLSubject>(kSubjectElementName);
}
void SAMLAttributeQueryElement::setSubject(const std::shared_ptr<SAMLSubject>& subject) {
  replaceOrAdd(*this, kSubjectElementName, subject);
}
std::vector<std::shared_ptr<SAMLAttribute>> SAMLAttributeQueryElement::samlAttributes() const {
  return children<SAMLAttribute>(kAttributeElementName);
}
void SAMLAttributeQueryElement::addAttribute(const std::shared_ptr<SAMLAttribute>& attribute) {
  addChildElement(attribute);
}

}  // namespace kestrelink
