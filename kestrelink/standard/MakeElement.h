// Creates elements in a client, which cannot link `createElement` of the element classes.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace kestrelink::standard {

inline constexpr const char* kAssertionNamespace = "urn:oasis:names:tc:SAML:2.0:assertion";
inline constexpr const char* kProtocolNamespace = "urn:oasis:names:tc:SAML:2.0:protocol";

/// Creates an element, and all below it, from XML text that is part of the program:
///
///     auto locality = elementFromText("<SubjectLocality/>");
///     locality->setAttributeWithName("Address", address);  // escaped when it is written
///
/// Never put text from elsewhere into the XML text: use `setTextContent` and
/// `setAttributeWithName`, which escape it. The element has the class that is registered for its
/// name.
///
/// Null when the text yields no XML; malformed text is read as far as libxml2 recovers it. Throws
/// only `std::bad_alloc`.
[[nodiscard]] inline std::shared_ptr<XMLWrapperElement> elementFromText(std::string_view xml) {
  SAMLParserController::sharedInstance();  // registers the SAML element classes
  const auto document =
      XMLWrapperDoc::initWithData(std::make_shared<const std::string>(xml), nullptr);
  if (!document) return nullptr;
  auto element = document->documentElement();
  // Namespaces set on it later must not be registered for XPath in the whole process.
  if (element) element->setQuery(nullptr);
  return element;
}

/// Creates a "NameID" (SAML 2.0 core, section 2.2.3) with that text, for a subject or a logout
/// request. Set its attributes with `setAttributeWithName`.
[[nodiscard]] inline std::shared_ptr<XMLWrapperElement> newNameId(std::string_view identifier) {
  auto element = elementFromText("<NameID/>");
  element->setNamespace(std::make_shared<XMLWrapperNamespace>("saml", kAssertionNamespace));
  element->setTextContent(std::string(identifier));
  return element;
}

}  // namespace kestrelink::standard
