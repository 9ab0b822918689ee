// Creates, reads and changes elements by the names of the standard.
//
//     auto policy = newElement("NameIDPolicy", "samlp", kProtocolNamespace);
//     policy->setAttributeWithName("AllowCreate", "true");
//     request->requestElement()->addChildElement(policy);
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kestrelink/standard/ElementCopy.h"
#include "kestrelink/standard/MakeElement.h"

namespace kestrelink::standard {

/// Whether the text is an XML name without a colon (Namespaces in XML, production 4), by the rule
/// that the library writes names by.
[[nodiscard]] inline bool isXmlName(std::string_view text) {
  if (text.find(':') != std::string_view::npos) return false;
  const auto element = elementFromText("<x/>");
  element->setAttributeWithName(text, "");
  std::optional<ErrorInfo> error;
  return element->xmlString(&error) && !error;
}

/// Creates an element of that name in that namespace, of the class registered for the name. Without
/// a prefix the namespace is the default one. Null when the name, or a prefix that is not empty, is
/// no XML name.
[[nodiscard]] inline std::shared_ptr<XMLWrapperElement> newElement(std::string_view name,
                                                                   std::string_view prefix,
                                                                   std::string_view uri) {
  if (!isXmlName(name) || !(prefix.empty() || isXmlName(prefix))) return nullptr;
  auto element = elementFromText("<" + std::string(name) + "/>");
  element->setNamespace(std::make_shared<XMLWrapperNamespace>(
      prefix.empty() ? std::nullopt : std::optional<std::string>(prefix), std::string(uri)));
  return element;
}

/// The text of the first child of that local name; `std::nullopt` when there is none or it has no
/// text.
[[nodiscard]] inline std::optional<std::string> childText(const XMLWrapperElement& element,
                                                          std::string_view name) {
  const auto child = element.firstElementByTagName(name);
  return child ? child->textContent() : std::nullopt;
}

/// Sets an attribute in a namespace, and declares the namespace on the element. The attribute gets
/// another prefix when the element uses that one for another namespace, or when it is empty, since
/// the default namespace is not for attributes. It replaces any attribute of the same local name.
inline void setAttribute(XMLWrapperElement& element, const XMLWrapperNamespace& ns,
                         std::string_view name, std::string_view value) {
  std::string prefix = ns.prefix().value_or("");
  if (prefix.empty()) prefix = "ns";
  for (auto taken = element.namespaces().find(prefix); taken && taken->href() != ns.href();) {
    prefix += "_";
    taken = element.namespaces().find(prefix);
  }
  XMLWrapperAttribute attribute;
  attribute.setName(std::string(name));
  attribute.setValue(std::string(value));
  attribute.setNs(std::make_shared<XMLWrapperNamespace>(prefix, ns.href()));
  detail::copyAttribute(element, attribute.name(), attribute);
}

}  // namespace kestrelink::standard
