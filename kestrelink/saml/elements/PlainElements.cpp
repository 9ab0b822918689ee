#include "kestrelink/saml/elements/PlainElements.h"

#include <utility>

#include "kestrelink/platform/Base64.h"
#include "kestrelink/platform/Decimal.h"
#include "kestrelink/saml/elements/SAMLNames.h"

namespace kestrelink {

std::vector<std::string> textsOf(const XMLWrapperElement::List& elements) {
  std::vector<std::string> texts;
  texts.reserve(elements.size());
  for (const auto& element : elements) {
    if (const auto& text = element->textContent()) texts.push_back(*text);
  }
  return texts;
}

std::optional<std::string> textOf(const std::shared_ptr<XMLWrapperElement>& element) {
  return element ? element->textContent() : std::nullopt;
}

std::optional<std::string> childTextOf(const std::shared_ptr<XMLWrapperElement>& element,
                                       std::string_view tagName) {
  return element ? textOf(element->firstElementByTagName(tagName)) : std::nullopt;
}

std::optional<double> numberOf(const std::optional<std::string>& text) {
  return text ? parseDecimal(*text) : std::nullopt;
}

std::optional<Bytes> bytesOf(const std::optional<std::string>& text) {
  return text ? decodeBase64(*text) : std::nullopt;
}

std::shared_ptr<XMLWrapperElement> textElement(std::string_view tagName, std::string_view text,
                                               const NamespaceMap& namespaces) {
  auto element = XMLWrapperElement::initWithTagName(tagName, namespaces);
  element->setTextContent(std::string(text));
  return element;
}

std::optional<std::string> attributeOf(const std::shared_ptr<XMLWrapperElement>& element,
                                       std::string_view name) {
  const auto attribute = element ? element->attributeWithName(name) : nullptr;
  return attribute ? attribute->value() : std::nullopt;
}

std::vector<std::string> transformsOf(const XMLWrapperElement& element) {
  std::vector<std::string> algorithms;
  const auto transforms = element.firstElementByTagName(kTransformsElementName);
  if (!transforms) return algorithms;
  for (const auto& transform : transforms->getElementsByTagName(kTransformElementName)) {
    if (auto algorithm = attributeOf(transform, kAlgorithmAttributeName)) {
      algorithms.push_back(std::move(*algorithm));
    }
  }
  return algorithms;
}

}  // namespace kestrelink
