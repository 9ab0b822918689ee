#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLDate.h"
#include "kestrelink/xml/XMLWrapperElement.h"

namespace kestrelink {

/// Decoded base64.
using Bytes = std::vector<std::uint8_t>;

/// The base of the SAML element classes. They are views of the element tree: every property is
/// computed on each read from the element's attributes and direct children, by exact local name.
///
/// For a missing attribute or child a property returns `std::nullopt`, null for an element, or an
/// empty list; for a date, number or base64 text that does not parse, `std::nullopt`. No error is
/// reported.
///
/// `createElement` and all static or protected operations, here and in every derived class, are
/// internal and not exported: see `XMLWrapperElement`.
class KESTRELINK_TYPE SAMLBaseElement : public XMLWrapperElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;

  /// Always null with `kSAMLParserErrorNoMaker`. Classes whose elements can be created have their
  /// own `createElement`.
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLBaseElement> createElement(
      ErrorOut error = nullptr);

 protected:
  void readNode(_xmlNode* node, XMLTreeReading& reading) override;

  /// Called after a parsed element and all below it are built.
  virtual void setElementProperties();

  /// A new element of class `Element` made in memory; `sequence` is its child element sequence, if
  /// it has one.
  template <class Element>
  static std::shared_ptr<Element> makeElement(
      std::string_view tagName, const NamespaceMap& namespaces = {},
      std::initializer_list<std::string_view> sequence = {}) {
    auto element = std::static_pointer_cast<Element>(Element::elementClass.makeInstance());
    element->startAs(tagName, namespaces, sequence);
    return element;
  }

  std::optional<std::string> attributeText(std::string_view name) const;
  std::optional<SAMLDate> attributeDate(std::string_view name) const;
  std::optional<double> attributeNumber(std::string_view name) const;

  std::optional<std::string> childText(std::string_view tagName) const;
  std::optional<Bytes> childBytes(std::string_view tagName) const;
  /// The attribute of the first child of that name.
  std::optional<std::string> childAttributeText(std::string_view tagName,
                                                std::string_view attribute) const;

  /// The first child of that name; null when it is not of that class.
  template <class Element>
  std::shared_ptr<Element> child(std::string_view tagName) const {
    return std::dynamic_pointer_cast<Element>(firstElementByTagName(tagName));
  }

  template <class Element>
  std::vector<std::shared_ptr<Element>> children(std::string_view tagName) const {
    return childrenOf<Element>(*this, tagName);
  }

  template <class Element>
  static std::vector<std::shared_ptr<Element>> childrenOf(const XMLWrapperElement& parent,
                                                          std::string_view tagName) {
    std::vector<std::shared_ptr<Element>> found;
    for (const auto& element : parent.elements()) {
      if (element->tagName() != tagName) continue;
      if (auto typed = std::dynamic_pointer_cast<Element>(element)) {
        found.push_back(std::move(typed));
      }
    }
    return found;
  }

 private:
  void startAs(std::string_view tagName, const NamespaceMap& namespaces,
               std::initializer_list<std::string_view> sequence);
};

}  // namespace kestrelink
