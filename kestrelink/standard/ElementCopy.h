// Copies of elements, for the standard forms of requests.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "kestrelink/standard/MakeElement.h"

namespace kestrelink::standard {

/// Puts the element into that namespace, under the prefix of its current namespace, or under
/// `prefix` when it has none.
inline void putInNamespace(XMLWrapperElement& element, const char* prefix, const char* href) {
  const NamespaceMap& declared = element.namespaces();
  if (!declared.empty() && declared.at(0)->href() == href) return;
  element.setNamespace(std::make_shared<XMLWrapperNamespace>(
      declared.empty() ? std::optional<std::string>(prefix) : declared.at(0)->prefix(), href));
}

namespace detail {

// libxml2 reads 256 levels; this library writes 1000.
inline constexpr int kDeepestCopied = 1000;

/// An empty element. It has the class registered for its name where a request looks it up by class.
/// All others are plain elements, which write all their children; a `SAMLSubjectConfirmation`
/// leaves some out.
inline std::shared_ptr<XMLWrapperElement> blankElement(const std::optional<std::string>& tagName) {
  // No class is registered for the last.
  constexpr std::array<std::string_view, 7> kNames = {
      "Attribute", "Conditions", "IDPEntry", "RequestedAuthnContext", "Scoping", "Subject", "x"};
  static const auto classes = [&kNames] {
    std::array<const XMLWrapperElementClass*, kNames.size()> found{};
    std::transform(kNames.begin(), kNames.end(), found.begin(), [](std::string_view name) {
      return &elementFromText("<" + std::string(name) + "/>")->dynamicClass();
    });
    return found;
  }();
  const auto known = std::find(kNames.begin(), kNames.end() - 1, tagName.value_or(""));
  auto element = classes[static_cast<std::size_t>(known - kNames.begin())]->makeInstance();
  element->setTagName(tagName);
  return element;
}

/// Declares the namespace unless the element already declares it.
inline void declare(XMLWrapperElement& element,
                    const std::shared_ptr<const XMLWrapperNamespace>& ns) {
  const auto declared = element.namespaces().find(ns->prefix());
  if (declared && declared->href() == ns->href()) return;
  // The first declaration is the element's own namespace.
  if (element.namespaces().empty()) {
    element.setNamespace(std::make_shared<XMLWrapperNamespace>(std::nullopt, ""));
  }
  element.setNamespace(ns);
}

/// Declares the prefix of a value such as "xs:string", when the original declares it.
inline void declarePrefixOf(const std::string& value, XMLWrapperElement& copy,
                            const XMLWrapperElement& original) {
  const std::size_t colon = value.find(':');
  if (colon == std::string::npos) return;
  if (const auto ns = original.namespaces().find(value.substr(0, colon))) declare(copy, ns);
}

inline void copyAttribute(XMLWrapperElement& copy, const std::string& key,
                          const XMLWrapperAttribute& attribute) {
  copy.setAttributeWithName(key, attribute.value());
  const auto made = copy.attributeWithName(key);
  made->setName(attribute.name());
  const auto& ns = attribute.ns();
  if (!ns) return;
  if (ns->href() == "http://www.w3.org/XML/1998/namespace") {
    made->setName("xml:" + attribute.name());  // this prefix needs no declaration and allows none
  } else {
    made->setNs(ns);
    declare(copy, ns);
  }
}

}  // namespace detail

/// A deep copy of the element. It declares the namespaces that it uses, those of its attributes
/// included, which the original does not declare.
[[nodiscard]] inline std::shared_ptr<XMLWrapperElement> copyOf(
    const XMLWrapperElement& original, int levels = detail::kDeepestCopied) {
  auto copy = detail::blankElement(original.tagName());
  if (!original.namespaces().empty()) copy->setNamespace(original.namespaces().at(0));
  for (const auto& [key, attribute] : original.attributes()) {
    detail::copyAttribute(*copy, key, *attribute);
    if (attribute->value()) detail::declarePrefixOf(*attribute->value(), *copy, original);
  }
  copy->setTextContent(original.textContent());
  if (original.textContent()) detail::declarePrefixOf(*original.textContent(), *copy, original);
  copy->setChildElementSequence(original.childElementSequence());

  XMLWrapperElement::List children;
  if (levels > 0) {
    std::transform(original.elements().begin(), original.elements().end(),
                   std::back_inserter(children),
                   [levels](const auto& child) { return copyOf(*child, levels - 1); });
  }
  copy->setElements(std::move(children));
  return copy;
}

}  // namespace kestrelink::standard
