#include "kestrelink/saml/elements/SAMLBaseElement.h"

#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLDateText.h"
#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/xml/StoreError.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLBaseElement::elementClass{
    "SAMLBaseElement", &makeElementInstance<SAMLBaseElement>};

std::shared_ptr<SAMLBaseElement> SAMLBaseElement::createElement(ErrorOut error) {
  storeError(error, SAMLParserErrorDomain, kSAMLParserErrorNoMaker);
  return nullptr;
}

void SAMLBaseElement::readNode(_xmlNode* node, XMLTreeReading& reading) {
  XMLWrapperElement::readNode(node, reading);
  setElementProperties();
}

void SAMLBaseElement::setElementProperties() {}

void SAMLBaseElement::startAs(std::string_view tagName, const NamespaceMap& namespaces,
                              std::initializer_list<std::string_view> sequence) {
  startWithTagName(tagName, namespaces);
  if (sequence.size() > 0) {
    setChildElementSequence(std::vector<std::string>(sequence.begin(), sequence.end()));
  }
}

std::optional<std::string> SAMLBaseElement::attributeText(std::string_view name) const {
  const auto attribute = attributeWithName(name);
  return attribute ? attribute->value() : std::nullopt;
}

std::optional<SAMLDate> SAMLBaseElement::attributeDate(std::string_view name) const {
  return SAMLDateFromString(attributeText(name));
}

std::optional<double> SAMLBaseElement::attributeNumber(std::string_view name) const {
  return numberOf(attributeText(name));
}

std::optional<std::string> SAMLBaseElement::childText(std::string_view tagName) const {
  return textOf(firstElementByTagName(tagName));
}

std::optional<Bytes> SAMLBaseElement::childBytes(std::string_view tagName) const {
  return bytesOf(childText(tagName));
}

std::optional<std::string> SAMLBaseElement::childAttributeText(std::string_view tagName,
                                                               std::string_view attribute) const {
  return attributeOf(firstElementByTagName(tagName), attribute);
}

}  // namespace kestrelink
