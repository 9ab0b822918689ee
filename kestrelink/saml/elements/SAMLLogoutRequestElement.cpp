#include "kestrelink/saml/elements/SAMLLogoutRequestElement.h"

#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLDateText.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/saml/elements/SAMLRequestParts.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLLogoutRequestElement::elementClass{
    "SAMLLogoutRequestElement", &makeElementInstance<SAMLLogoutRequestElement>};

std::shared_ptr<SAMLLogoutRequestElement> SAMLLogoutRequestElement::createElement(
    ErrorOut /*error*/) {
  auto element = makeElement<SAMLLogoutRequestElement>(
      kLogoutRequestElementName, protocolNamespaceOnly(),
      {kIssuerElementName, kSignatureElementName, kNameIdElementName, kSessionIndexElementName});
  stampRequest(*element, "");
  return element;
}

std::optional<std::string> SAMLLogoutRequestElement::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<SAMLDate> SAMLLogoutRequestElement::issueInstant() const {
  return attributeDate(kIssueInstantAttributeName);
}
std::optional<std::string> SAMLLogoutRequestElement::destination() const {
  return attributeText(kDestinationAttributeName);
}
void SAMLLogoutRequestElement::setDestination(std::string_view destination) {
  setAttributeWithName(kDestinationAttributeName, destination);
}
std::optional<std::string> SAMLLogoutRequestElement::consent() const {
  return attributeText(kConsentAttributeName);
}
std::optional<std::string> SAMLLogoutRequestElement::reason() const {
  return attributeText(kReasonAttributeName);
}
void SAMLLogoutRequestElement::setReason(std::string_view reason) {
  setAttributeWithName(kReasonAttributeName, reason);
}
std::optional<SAMLDate> SAMLLogoutRequestElement::notOnOrAfter() const {
  return attributeDate(kNotOnOrAfterAttributeName);
}
void SAMLLogoutRequestElement::setNotOnOrAfter(std::optional<SAMLDate> date) {
  setAttributeWithName(kNotOnOrAfterAttributeName, SAMLStringFromDate(date));
}
std::optional<std::string> SAMLLogoutRequestElement::issuer() const {
  return childText(kIssuerElementName);
}
void SAMLLogoutRequestElement::setIssuer(std::string_view issuer) { setIssuerOf(*this, issuer); }
std::shared_ptr<SAMLSignature> SAMLLogoutRequestElement::signature() const {
  return child<SAMLSignature>(kSignatureElementName);
}
std::shared_ptr<SAMLNameId> SAMLLogoutRequestElement::nameId() const {
  return child<SAMLNameId>(kNameIdElementName);
}
std::optional<std::string> SAMLLogoutRequestElement::sessionIndex() const {
  return childText(kSessionIndexElementName);
}
void SAMLLogoutRequestElement::setSessionIndex(std::string_view sessionIndex) {
  replaceOrAdd(*this, kSessionIndexElementName,
               textElement(kSessionIndexElementName, sessionIndex));
}

}  // namespace kestrelink
