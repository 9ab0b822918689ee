#include "kestrelink/saml/elements/SAMLAuthNRequestElement.h"

#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/saml/elements/SAMLRequestParts.h"

namespace kestrelink {
namespace {

std::string_view flagText(bool flag) { return flag ? "true" : "false"; }

}  // namespace

constinit const XMLWrapperElementClass SAMLNameIdPolicy::elementClass{
    "SAMLNameIdPolicy", &makeElementInstance<SAMLNameIdPolicy>};
constinit const XMLWrapperElementClass SAMLRequestedAuthNContext::elementClass{
    "SAMLRequestedAuthNContext", &makeElementInstance<SAMLRequestedAuthNContext>};
constinit const XMLWrapperElementClass SAMLIDPEntry::elementClass{
    "SAMLIDPEntry", &makeElementInstance<SAMLIDPEntry>};
constinit const XMLWrapperElementClass SAMLScoping::elementClass{"SAMLScoping",
                                                                 &makeElementInstance<SAMLScoping>};
constinit const XMLWrapperElementClass SAMLAuthNRequestElement::elementClass{
    "SAMLAuthNRequestElement", &makeElementInstance<SAMLAuthNRequestElement>};

std::shared_ptr<SAMLNameIdPolicy> SAMLNameIdPolicy::createElement(ErrorOut /*error*/) {
  auto element = makeElement<SAMLNameIdPolicy>(kNameIdPolicyElementName, protocolNamespaceOnly());
  element->setAttributeWithName(kFormatAttributeName, kNameIdPolicyTransientValue);
  element->setAttributeWithName(kAllowCreateAttributeName, flagText(false));
  return element;
}

std::optional<std::string> SAMLNameIdPolicy::format() const {
  return attributeText(kFormatAttributeName);
}
std::optional<std::string> SAMLNameIdPolicy::allowCreation() const {
  return attributeText(kAllowCreateAttributeName);
}

std::shared_ptr<SAMLRequestedAuthNContext> SAMLRequestedAuthNContext::createElement(
    ErrorOut /*error*/) {
  return makeElement<SAMLRequestedAuthNContext>(kRequestedAuthNContextElementName,
                                                protocolNamespaceOnly());
}

std::optional<std::string> SAMLRequestedAuthNContext::comparison() const {
  return attributeText(kComparisonAttributeName);
}
std::optional<std::string> SAMLRequestedAuthNContext::classRef() const {
  return childText(kAuthnContextClassRefElementName);
}
std::optional<std::string> SAMLRequestedAuthNContext::declRef() const {
  return childText(kAuthnContextDeclRefElementName);
}

std::shared_ptr<SAMLIDPEntry> SAMLIDPEntry::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLIDPEntry>(kIDPEntryElementName, protocolNamespaceOnly());
}

std::optional<std::string> SAMLIDPEntry::providerId() const {
  return attributeText(kProviderIdAttributeName);
}
std::optional<std::string> SAMLIDPEntry::name() const { return attributeText(kNameAttributeName); }
std::optional<std::string> SAMLIDPEntry::loc() const { return attributeText(kLocAttributeName); }

std::shared_ptr<SAMLScoping> SAMLScoping::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLScoping>(kScopingElementName, protocolNamespaceOnly(),
                                  {kIDPListElementName, kRequesterIdElementName});
}

void SAMLScoping::addRequesterId(std::string_view requesterId) {
  addChildElement(textElement(kRequesterIdElementName, requesterId));
}
std::vector<std::string> SAMLScoping::requesterIds() const {
  return textsOf(getElementsByTagName(kRequesterIdElementName));
}
std::optional<double> SAMLScoping::proxyCount() const {
  return attributeNumber(kProxyCountAttributeName);
}
std::optional<std::string> SAMLScoping::getComplete() const {
  return childTextOf(firstElementByTagName(kIDPListElementName), kGetCompleteElementName);
}
std::vector<std::shared_ptr<SAMLIDPEntry>> SAMLScoping::idpList() const {
  const auto list = firstElementByTagName(kIDPListElementName);
  return list ? childrenOf<SAMLIDPEntry>(*list, kIDPEntryElementName)
              : std::vector<std::shared_ptr<SAMLIDPEntry>>();
}

std::shared_ptr<SAMLAuthNRequestElement> SAMLAuthNRequestElement::createElement(ErrorOut error) {
  auto element = makeElement<SAMLAuthNRequestElement>(
      kAuthNRequestElementName, protocolNamespaceOnly(),
      {kIssuerElementName, kSignatureElementName, kSubjectElementName, kNameIdPolicyElementName,
       kConditionsElementName, kRequestedAuthNContextElementName, kScopingElementName});
  stampRequest(*element, "_");
  element->addChildElement(SAMLNameIdPolicy::createElement(error));
  return element;
}

std::optional<std::string> SAMLAuthNRequestElement::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<SAMLDate> SAMLAuthNRequestElement::issueInstant() const {
  return attributeDate(kIssueInstantAttributeName);
}
std::optional<std::string> SAMLAuthNRequestElement::destination() const {
  return attributeText(kDestinationAttributeName);
}
void SAMLAuthNRequestElement::setDestination(std::string_view destination) {
  setAttributeWithName(kDestinationAttributeName, destination);
}
std::optional<std::string> SAMLAuthNRequestElement::consent() const {
  return attributeText(kConsentAttributeName);
}
bool SAMLAuthNRequestElement::forceAuthN() const {
  return attributeText(kForceAuthNAttributeName) == flagText(true);
}
void SAMLAuthNRequestElement::setForceAuthN(bool force) {
  setAttributeWithName(kForceAuthNAttributeName, flagText(force));
}
bool SAMLAuthNRequestElement::isPassive() const {
  return attributeText(kIsPassiveAttributeName) == flagText(true);
}
void SAMLAuthNRequestElement::setIsPassive(bool passive) {
  setAttributeWithName(kIsPassiveAttributeName, flagText(passive));
}
std::optional<std::string> SAMLAuthNRequestElement::providerName() const {
  return attributeText(kProviderNameAttributeName);
}
void SAMLAuthNRequestElement::setProviderName(std::string_view name) {
  setAttributeWithName(kProviderIdAttributeName, name);
}
std::optional<std::string> SAMLAuthNRequestElement::issuer() const {
  return childText(kIssuerElementName);
}
void SAMLAuthNRequestElement::setIssuer(std::string_view issuer) { setIssuerOf(*this, issuer); }

std::shared_ptr<SAMLSignature> SAMLAuthNRequestElement::signature() const {
  return child<SAMLSignature>(kSignatureElementName);
}
std::shared_ptr<SAMLSubject> SAMLAuthNRequestElement::subject() const {
  return child<SAMLSubject>(kSubjectElementName);
}
void SAMLAuthNRequestElement::setSubject(const std::shared_ptr<SAMLSubject>& subject) {
  addChildElement(subject);
}
std::shared_ptr<SAMLNameIdPolicy> SAMLAuthNRequestElement::nameIdPolicy() const {
  return child<SAMLNameIdPolicy>(kNameIdPolicyElementName);
}
void SAMLAuthNRequestElement::setNameIdPolicy(const std::shared_ptr<SAMLNameIdPolicy>& policy) {
  addChildElement(policy);
}
std::shared_ptr<SAMLConditions> SAMLAuthNRequestElement::conditions() const {
  return child<SAMLConditions>(kConditionsElementName);
}
void SAMLAuthNRequestElement::setConditions(const std::shared_ptr<SAMLConditions>& conditions) {
  addChildElement(conditions);
}
std::shared_ptr<SAMLRequestedAuthNContext> SAMLAuthNRequestElement::context() const {
  return child<SAMLRequestedAuthNContext>(kRequestedAuthNContextElementName);
}
std::shared_ptr<SAMLScoping> SAMLAuthNRequestElement::scoping() const {
  return child<SAMLScoping>(kScopingElementName);
}
void SAMLAuthNRequestElement::setScoping(const std::shared_ptr<SAMLScoping>& scoping) {
  addChildElement(scoping);
}

}  // namespace kestrelink
