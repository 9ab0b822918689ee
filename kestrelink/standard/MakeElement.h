// Elements from outside the library: a client cannot link the makers of the element classes.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace kestrelink::standard {

inline constexpr const char* kAssertionNamespace = "urn:oasis:names:tc:SAML:2.0:assertion";
inline constexpr const char* kProtocolNamespace = "urn:oasis:names:tc:SAML:2.0:protocol";

/// An element, and all below it, from XML text that the program itself holds:
///
///     auto locality = elementFromText("<SubjectLocality/>");
///     locality->setAttributeWithName("Address", address);  // escaped when it is written
///
/// Text from elsewhere belongs into `setTextContent` and `setAttributeWithName`, which take any
/// text, and never into the XML text. The element has the class that its name is registered for.
///
/// Null when the text yields no XML; text that is not well-formed is read as far as libxml2
/// recovers it, as everywhere in this library. Throws std::bad_alloc alone.
inline std::shared_ptr<XMLWrapperElement> elementFromText(std::string_view xml) {
  SAMLParserController::sharedInstance();  // registers the SAML element classes
  const auto document =
      XMLWrapperDoc::initWithData(std::make_shared<const std::string>(xml), nullptr);
  if (!document) return nullptr;
  auto element = document->documentElement();
  // What is set on it later is not for the XPath prefixes of the whole process.
  if (element) element->setQuery(nullptr);
  return element;
}

/// A "NameID" (SAML 2.0 core, section 2.2.3) with that text, for a subject or a logout request that
/// a client fills in by hand. Its other attributes are set with `setAttributeWithName`.
inline std::shared_ptr<XMLWrapperElement> newNameId(std::string_view identifier) {
  auto element = elementFromText("<NameID/>");
  element->setNamespace(std::make_shared<XMLWrapperNamespace>("saml", kAssertionNamespace));
  element->setTextContent(std::string(identifier));
  return element;
}

}  // namespace kestrelink::standard
