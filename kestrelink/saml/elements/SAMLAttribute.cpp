#include "kestrelink/saml/elements/SAMLAttribute.h"

#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLAttribute::elementClass{
    "SAMLAttribute", &makeElementInstance<SAMLAttribute>};

std::shared_ptr<SAMLAttribute> SAMLAttribute::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLAttribute>(kAttributeElementName, assertionNamespaceOnly());
}

std::optional<std::string> SAMLAttribute::name() const { return attributeText(kNameAttributeName); }
void SAMLAttribute::setName(std::string_view name) {
  setAttributeWithName(kNameAttributeName, name);
}
std::optional<std::string> SAMLAttribute::nameFormat() const {
  return attributeText(kNameFormatAttributeName);
}
std::optional<std::string> SAMLAttribute::friendlyName() const {
  return attributeText(kFriendlyNameAttributeName);
}
std::vector<std::string> SAMLAttribute::values() const {
  return textsOf(getElementsByTagName(kAttributeValueElementName));
}

void SAMLAttribute::addAttributeValue(std::string_view value) {
  addChildElement(textElement(kAttributeValueElementName, value, assertionNamespaceOnly()));
}

}  // namespace kestrelink
