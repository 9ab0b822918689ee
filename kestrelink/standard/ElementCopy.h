// Copies of elements, for the standard forms of requests.
#pragma once

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "kestrelink/standard/MakeElement.h"

namespace kestrelink::standard {

/// Puts the element into that namespace: under the prefix of the namespace it is in, or under
/// `prefix` when it is in none.
inline void putInNamespace(XMLWrapperElement& element, const char* prefix, const char* href) {
  const NamespaceMap& declared = element.namespaces();
  if (!declared.empty() && declared.at(0)->href() == href) return;
  element.setNamespace(std::make_shared<XMLWrapperNamespace>(
      declared.empty() ? std::optional<std::string>(prefix) : declared.at(0)->prefix(), href));
}

namespace detail {

// libxml2 reads 256 levels, and this library writes 1000.
inline constexpr int kDeepestCopied = 1000;

/// An element without anything in it. It has the class of its name where a request looks it up by
/// class. Every other is a plain element, which writes all its children: a subject confirmation of
/// its own class leaves out some.
inline std::shared_ptr<XMLWrapperElement> blankElement(const std::optional<std::string>& tagName) {
  constexpr std::array<std::string_view, 6> kLookedUpByClass = {
      "Attribute", "Conditions", "IDPEntry", "RequestedAuthnContext", "Scoping", "Subject"};
  const bool byClass = tagName && std::find(kLookedUpByClass.begin(), kLookedUpByClass.end(),
                                            *tagName) != kLookedUpByClass.end();
  auto element = elementFromText(byClass ? "<" + *tagName + "/>" : "<x/>");
  if (!byClass) element->setTagName(tagName);
  return element;
}

/// Declares the namespace, unless the element does so already.
inline void declare(XMLWrapperElement& element,
                    const std::shared_ptr<const XMLWrapperNamespace>& ns) {
  const auto declared = element.namespaces().find(ns->prefix());
  if (declared && declared->href() == ns->href()) return;
  // The first declaration is the namespace that the element is in.
  if (element.namespaces().empty()) {
    element.setNamespace(std::make_shared<XMLWrapperNamespace>(std::nullopt, ""));
  }
  element.setNamespace(ns);
}

/// Declares the namespace of a value such as "xs:string", when the original recorded it.
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

/// A copy of the element and all below it, which shares nothing with the original. Of the
/// namespaces that the original declares it declares those it uses, and it declares those of its
/// attributes, which the original does not.
inline std::shared_ptr<XMLWrapperElement> copyOf(const XMLWrapperElement& original,
                                                 int levels = detail::kDeepestCopied) {
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
