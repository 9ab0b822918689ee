#pragma once

// What the steps before the library share: libxml2 handles with owners, and look-ups that refuse.

#include <xmlsec/xmldsig.h>
#include <xmlsec/xmlsec.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

namespace verify_then_read {

inline constexpr const char* kProtocol = "urn:oasis:names:tc:SAML:2.0:protocol";
inline constexpr const char* kAssertion = "urn:oasis:names:tc:SAML:2.0:assertion";
inline constexpr const char* kSignature = "http://www.w3.org/2000/09/xmldsig#";

struct Release {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlNs** list) const { xmlFree(list); }
  void operator()(xmlChar* text) const { xmlFree(text); }
  void operator()(xmlSecKey* key) const { xmlSecKeyDestroy(key); }
  void operator()(xmlSecDSigCtx* context) const { xmlSecDSigCtxDestroy(context); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Release>;

/// Throws `std::runtime_error` with the reason of the refusal unless the condition holds.
void require(bool condition, const char* reason);

inline const xmlChar* xmlText(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
inline const xmlChar* xmlText(const std::string& text) { return xmlText(text.c_str()); }
/// Empty for null.
std::string text(const Owned<xmlChar>& value);

/// The attribute in no namespace. Empty when there is none: none that is asked for may be empty.
std::string attribute(const xmlNode* element, const char* name);

bool is(const xmlNode* element, const char* space, const char* name);

/// The direct children of that name: a search below them could find what an attacker put there.
std::vector<xmlNode*> children(xmlNode* parent, const char* space, const char* name);

/// The only one of them, or a refusal.
xmlNode* onlyChild(xmlNode* parent, const char* space, const char* name, const char* reason);

/// A well-formed document without a document type. Nothing is expanded, repaired or fetched.
Owned<xmlDoc> parsed(std::string_view xml);

std::string written(xmlDoc* document);

}  // namespace verify_then_read
