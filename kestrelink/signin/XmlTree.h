// libxml2 handles with owners, strict parsing, and look-ups by namespace and name.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

#include "kestrelink/signin/QuietLibxml.h"
#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {

inline constexpr const char* kProtocol = "urn:oasis:names:tc:SAML:2.0:protocol";
inline constexpr const char* kAssertion = "urn:oasis:names:tc:SAML:2.0:assertion";
inline constexpr const char* kMetadata = "urn:oasis:names:tc:SAML:2.0:metadata";
inline constexpr const char* kSignature = "http://www.w3.org/2000/09/xmldsig#";
inline constexpr const char* kEncryption = "http://www.w3.org/2001/04/xmlenc#";
inline constexpr const char* kSoap = "http://schemas.xmlsoap.org/soap/envelope/";

struct Release {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlNs** list) const { xmlFree(list); }
  void operator()(xmlChar* text) const { xmlFree(text); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Release>;

/// What libxml2 has made. Throws `std::bad_alloc` when it is null.
template <class Handle>
Handle* made(Handle* handle) {
  if (handle == nullptr) throw std::bad_alloc();
  return handle;
}

inline const xmlChar* xmlText(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
inline const xmlChar* xmlText(const std::string& text) { return xmlText(text.c_str()); }
/// Empty for null.
std::string textOf(const xmlChar* text);

/// The attribute in no namespace. Empty when there is none: none that is asked for may be empty.
std::string attribute(const xmlNode* element, const char* name);
bool hasAttribute(const xmlNode* element, const char* name);
/// The text directly in the element, without white space at both ends.
std::string contentOf(const xmlNode* element);

bool is(const xmlNode* element, const char* space, const char* name);

/// The direct children of that name: a search below them could find what an attacker put there.
std::vector<xmlNode*> children(const xmlNode* parent, const char* space, const char* name);
/// The first of them, or null.
xmlNode* firstChild(const xmlNode* parent, const char* space, const char* name);

/// A well-formed document without a document type. Nothing is expanded, repaired, fetched or
/// written anywhere. Refused: `tooLong`, `documentType`, `notXml`; also what would cost too much
/// time or memory (bounds of the first library).
Owned<xmlDoc> parsed(std::string_view xml, std::size_t mostBytes);

/// A document that this library wrote, or a provider signed: parsed as strictly, without bounds,
/// which hold for what came in.
Owned<xmlDoc> reparsed(const std::string& xml);

/// The whole document as XML text in UTF-8.
std::string written(xmlDoc* document);

}  // namespace kestrelink::signin
