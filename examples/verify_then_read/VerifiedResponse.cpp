#include "VerifiedResponse.h"

#include <set>
#include <stdexcept>

#include "Declarations.h"
#include "SignedText.h"
#include "XmlTree.h"

namespace verify_then_read {
namespace {

constexpr const char* kSuccess = "urn:oasis:names:tc:SAML:2.0:status:Success";

// Any spelling in any namespace: which attributes are identifiers depends on who reads them.
void requireDistinctIdentifiers(xmlNode* element, std::set<std::string>& seen) {
  for (xmlAttr* each = element->properties; each != nullptr; each = each->next) {
    if (xmlStrcasecmp(each->name, xmlText("id")) != 0) continue;
    const Owned<xmlChar> value(xmlNodeListGetString(element->doc, each->children, 1));
    require(seen.insert(text(value)).second, "an identifier is used twice");
  }
  for (xmlNode* child = xmlFirstElementChild(element); child != nullptr;
       child = xmlNextElementSibling(child)) {
    requireDistinctIdentifiers(child, seen);
  }
}

// xmlsec makes canonical forms before it verifies anything. In each element they may write every
// namespace in use out again, and search all that are in scope for each of them and for each prefix
// of the list.
void requireFewDeclarations(xmlNode* element, int inScope) {
  for (const xmlNs* each = element->nsDef; each != nullptr; each = each->next, ++inScope) {
    require(xmlStrlen(each->href) <= 1000, "a namespace is too long");
  }
  require(inScope <= 100, "too many namespaces are declared");
  const Owned<xmlChar> prefixes(xmlGetProp(element, xmlText("PrefixList")));
  require(text(prefixes).size() <= 100, "a list of prefixes is too long");
  for (xmlNode* child = xmlFirstElementChild(element); child != nullptr;
       child = xmlNextElementSibling(child)) {
    requireFewDeclarations(child, inScope);
  }
}

xmlNode* onlySignature(xmlNode* element, const char* several) {
  require(!children(element, kSignature, "Signature").empty(), "there is no signature");
  return onlyChild(element, kSignature, "Signature", several);
}

// The signature to trust, by where it stands. Its parent is what it has to be about.
xmlNode* chosenSignature(xmlNode* root) {
  const bool isLogout = is(root, kProtocol, "LogoutResponse");
  require(isLogout || is(root, kProtocol, "Response"), "the root is not a response");
  const auto assertions = children(root, kAssertion, "Assertion");
  const bool isSigned = !children(root, kSignature, "Signature").empty();
  if (isLogout || isSigned || assertions.empty()) {
    return onlySignature(root, "the response has several signatures");
  }
  require(assertions.size() == 1, "the response is unsigned and has several assertions");
  return onlySignature(assertions.front(), "the assertion has several signatures");
}

// A response around a signed assertion. Nothing of the unsigned one is copied: identifier, instant
// and issuer are the assertion's. The status is success whatever the unsigned one said, for anybody
// could have written that; the provider's yes is the assertion it signed.
void wrap(xmlDoc* document, xmlNode* assertion) {
  xmlNode* const issuer =
      onlyChild(assertion, kAssertion, "Issuer", "the signed assertion has no issuer");
  const std::string identifier = attribute(assertion, "ID") + ".response";
  const std::string instant = attribute(assertion, "IssueInstant");

  xmlNode* const response = xmlNewDocNode(document, nullptr, xmlText("Response"), nullptr);
  xmlDocSetRootElement(document, response);
  xmlNs* const protocol = xmlNewNs(response, xmlText(kProtocol), xmlText("samlp"));
  xmlSetNs(response, protocol);
  xmlNewProp(response, xmlText("ID"), xmlText(identifier));
  xmlNewProp(response, xmlText("Version"), xmlText("2.0"));
  xmlNewProp(response, xmlText("IssueInstant"), xmlText(instant));
  xmlAddChild(response, xmlDocCopyNode(issuer, document, 1));
  xmlNode* const status = xmlNewChild(response, protocol, xmlText("Status"), nullptr);
  xmlNode* const code = xmlNewChild(status, protocol, xmlText("StatusCode"), nullptr);
  xmlNewProp(code, xmlText("Value"), xmlText(kSuccess));
  xmlAddChild(response, assertion);
}

std::string asResponse(const std::string& verified) {
  const Owned<xmlDoc> document = parsed(verified);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  if (is(root, kAssertion, "Assertion")) wrap(document.get(), root);
  return written(document.get());
}

}  // namespace

std::optional<std::string> verifiedResponse(std::string_view response,
                                            std::string_view certificatePem,
                                            std::string& reason) try {
  const Owned<xmlDoc> document = parsed(response);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  std::set<std::string> identifiers;
  requireDistinctIdentifiers(root, identifiers);
  requireFewDeclarations(root, 0);
  xmlNode* const signature = chosenSignature(root);
  xmlNode* const original = signature->parent;
  const std::string signedXml = signedText(signature, certificatePem);
  return asResponse(withDeclarations(signedXml, original, signature));
} catch (const std::runtime_error& refusal) {
  reason = refusal.what();
  return std::nullopt;
}

}  // namespace verify_then_read
