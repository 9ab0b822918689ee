#include "kestrelink/saml/elements/SAMLBaseElement.h"

#include "kestrelink/platform/Base64.h"
#include "kestrelink/platform/Decimal.h"
#include "kestrelink/saml/elements/ElementReading.h"
#include "kestrelink/saml/elements/SAMLDateText.h"
#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/xml/StoreError.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLBaseElement::elementClass{
    "SAMLBaseElement", &makeElementInstance<SAMLBaseElement>};

std::shared_ptr<SAMLBaseElement> SAMLBaseElement::createElement(ErrorOut error) {
  storeError(error, kSAMLParserErrorDomain, kSAMLParserErrorNoMaker);
  return nullptr;
}

void SAMLBaseElement::readNode(_xmlNode* node, XMLTreeReading& reading) {
  XMLWrapperElement::readNode(node, reading);
  setElementProperties();
}

void SAMLBaseElement::setElementProperties() {}

void SAMLBaseElement::setSequence(std::initializer_list<std::string_view> tagNames) {
  setChildElementSequence(std::vector<std::string>(tagNames.begin(), tagNames.end()));
}

std::optional<std::string> SAMLBaseElement::attributeText(std::string_view name) const {
  const auto attribute = attributeWithName(name);
  return attribute ? attribute->value() : std::nullopt;
}

std::optional<SAMLDate> SAMLBaseElement::attributeDate(std::string_view name) const {
  return SAMLDateFromString(attributeText(name));
}

std::optional<double> SAMLBaseElement::attributeNumber(std::string_view name) const {
  const auto text = attributeText(name);
  return text ? parseDecimal(*text) : std::nullopt;
}

std::optional<std::string> SAMLBaseElement::childText(std::string_view tagName) const {
  return textOf(firstElementByTagName(tagName));
}

std::optional<std::vector<std::uint8_t>> SAMLBaseElement::childBytes(
    std::string_view tagName) const {
  const auto text = childText(tagName);
  return text ? decodeBase64(*text) : std::nullopt;
}

std::optional<std::string> SAMLBaseElement::childAttributeText(std::string_view tagName,
                                                               std::string_view attribute) const {
  return attributeOf(firstElementByTagName(tagName), attribute);
}

}  // namespace kestrelink
