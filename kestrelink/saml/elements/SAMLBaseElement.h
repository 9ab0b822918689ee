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

/// The base of the SAML element classes. They are views of the element tree: every property is
/// computed on each read from the element's attributes and direct children, by exact local name.
///
/// A missing attribute or child answers absent (null for an element), a list answers empty; a date,
/// number or base64 text that does not parse answers absent too. Nothing here reports an error.
///
/// The makers (`createElement`) and all that is static or protected, here and in every derived
/// class, are the library's own and cannot be linked: see `XMLWrapperElement`.
class KESTRELINK_TYPE SAMLBaseElement : public XMLWrapperElement {
 public:
  static const XMLWrapperElementClass elementClass;

  /// A class that can be composed has its own maker; this one makes nothing and reports code 201 of
  /// `SAMLParserErrorDomain`.
  static std::shared_ptr<SAMLBaseElement> createElement(ErrorOut error = nullptr);

 protected:
  void readNode(_xmlNode* node, XMLTreeReading& reading) override;

  /// Called when a parsed element and all below it are built.
  virtual void setElementProperties();

  /// A new element made in memory, of class `Element`.
  template <class Element>
  static std::shared_ptr<Element> makeElement(std::string_view tagName) {
    auto element = std::static_pointer_cast<Element>(Element::elementClass.makeInstance());
    element->startWithTagName(tagName);
    return element;
  }

  void setSequence(std::initializer_list<std::string_view> tagNames);

  std::optional<std::string> attributeText(std::string_view name) const;
  std::optional<SAMLDate> attributeDate(std::string_view name) const;
  std::optional<double> attributeNumber(std::string_view name) const;

  std::optional<std::string> childText(std::string_view tagName) const;
  std::optional<std::vector<std::uint8_t>> childBytes(std::string_view tagName) const;
  /// The attribute of the first child of that name.
  std::optional<std::string> childAttributeText(std::string_view tagName,
                                                std::string_view attribute) const;

  /// The first child of that name as what the factory made of it.
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
};

}  // namespace kestrelink
