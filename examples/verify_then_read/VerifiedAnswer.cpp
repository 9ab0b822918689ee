#include "VerifiedAnswer.h"

#include <xmlsec/crypto.h>
#include <xmlsec/errors.h>
#include <xmlsec/xmldsig.h>
#include <xmlsec/xmlsec.h>

#include <algorithm>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

#include <climits>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/valid.h>

namespace verify_then_read {
namespace {

constexpr const char* kProtocol = "urn:oasis:names:tc:SAML:2.0:protocol";
constexpr const char* kAssertion = "urn:oasis:names:tc:SAML:2.0:assertion";
constexpr const char* kSuccess = "urn:oasis:names:tc:SAML:2.0:status:Success";
constexpr const char* kSignature = "http://www.w3.org/2000/09/xmldsig#";

struct Release {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlNs** list) const { xmlFree(list); }
  void operator()(xmlChar* text) const { xmlFree(text); }
  void operator()(xmlSecKey* key) const { xmlSecKeyDestroy(key); }
  void operator()(xmlSecDSigCtx* context) const { xmlSecDSigCtxDestroy(context); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Release>;

void require(bool condition, const char* reason) {
  if (!condition) throw std::runtime_error(reason);
}

const xmlChar* xmlText(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
const xmlChar* xmlText(const std::string& text) { return xmlText(text.c_str()); }

std::string text(const Owned<xmlChar>& value) {
  return value ? reinterpret_cast<const char*>(value.get()) : std::string();
}

// Empty when there is none: no attribute that is asked for here may be empty.
std::string attribute(const xmlNode* element, const char* name) {
  return text(Owned<xmlChar>(xmlGetNoNsProp(element, xmlText(name))));
}

bool is(const xmlNode* element, const char* space, const char* name) {
  return element->ns != nullptr && xmlStrEqual(element->ns->href, xmlText(space)) != 0 &&
         xmlStrEqual(element->name, xmlText(name)) != 0;
}

// Direct children only: what lies deeper is somebody else's business.
std::vector<xmlNode*> children(xmlNode* parent, const char* space, const char* name) {
  std::vector<xmlNode*> found;
  for (xmlNode* child = xmlFirstElementChild(parent); child != nullptr;
       child = xmlNextElementSibling(child)) {
    if (is(child, space, name)) found.push_back(child);
  }
  return found;
}

xmlNode* onlyChild(xmlNode* parent, const char* space, const char* name, const char* reason) {
  const auto found = children(parent, space, name);
  require(found.size() == 1, reason);
  return found.front();
}

// Without XML_PARSE_NOENT and XML_PARSE_RECOVER: nothing is expanded and nothing repaired.
Owned<xmlDoc> parsed(std::string_view xml) {
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  require(xml.size() <= INT_MAX, "the answer is too long");
  Owned<xmlDoc> document(
      xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", nullptr, kOptions));
  require(document && xmlDocGetRootElement(document.get()), "the answer is not well-formed XML");
  require(xmlGetIntSubset(document.get()) == nullptr, "the answer has a document type");
  return document;
}

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

// The signature to trust. Its parent is what it has to be about.
xmlNode* chosenSignature(xmlNode* root) {
  require(is(root, kProtocol, "Response"), "the root is not a response");
  if (!children(root, kSignature, "Signature").empty()) {
    return onlyChild(root, kSignature, "Signature", "the response has several signatures");
  }
  const auto assertions = children(root, kAssertion, "Assertion");
  require(!assertions.empty(), "there is no signature: nor is there an assertion");
  require(assertions.size() == 1, "the response is unsigned and has several assertions");
  require(!children(assertions.front(), kSignature, "Signature").empty(), "there is no signature");
  return onlyChild(assertions.front(), kSignature, "Signature",
                   "the assertion has several signatures");
}

using Algorithms = std::vector<xmlSecTransformId>;

Algorithms signatureMethods() {
  return {xmlSecTransformRsaSha256Id,   xmlSecTransformRsaSha384Id,   xmlSecTransformRsaSha512Id,
          xmlSecTransformEcdsaSha256Id, xmlSecTransformEcdsaSha384Id, xmlSecTransformEcdsaSha512Id};
}
Algorithms digestMethods() {
  return {xmlSecTransformSha256Id, xmlSecTransformSha384Id, xmlSecTransformSha512Id};
}
// In this order, and neither more nor fewer.
Algorithms transforms() { return {xmlSecTransformEnvelopedId, xmlSecTransformExclC14NId}; }

bool names(const xmlNode* element, xmlSecTransformId algorithm) {
  return attribute(element, "Algorithm") == reinterpret_cast<const char*>(algorithm->href);
}

void requireAlgorithm(xmlNode* parent, const char* name, const Algorithms& allowed,
                      const char* reason) {
  const xmlNode* const method = onlyChild(parent, kSignature, name, reason);
  for (xmlSecTransformId algorithm : allowed) {
    if (names(method, algorithm)) return;
  }
  throw std::runtime_error(reason);
}

void requirePlainSignature(xmlNode* signature) {
  require(children(signature, kSignature, "Object").empty(), "the signature has an Object");
  xmlNode* const info = onlyChild(signature, kSignature, "SignedInfo", "not one SignedInfo");
  requireAlgorithm(info, "CanonicalizationMethod", {xmlSecTransformExclC14NId},
                   "the canonicalization is not allowed");
  requireAlgorithm(info, "SignatureMethod", signatureMethods(),
                   "the signature algorithm is not allowed");

  xmlNode* const reference =
      onlyChild(info, kSignature, "Reference", "the signature has not one Reference");
  requireAlgorithm(reference, "DigestMethod", digestMethods(),
                   "the digest algorithm is not allowed");
  xmlNode* const list = onlyChild(reference, kSignature, "Transforms", "there are no transforms");
  const auto used = children(list, kSignature, "Transform");
  const Algorithms expected = transforms();
  require(std::equal(used.begin(), used.end(), expected.begin(), expected.end(), names),
          "the transforms are not allowed");

  // Not a name, and "#" with it could be an XPointer to somewhere else.
  const std::string identifier = attribute(signature->parent, "ID");
  require(xmlValidateNCName(xmlText(identifier), 0) == 0, "the signed element's ID is no name");
  require(attribute(reference, "URI") == "#" + identifier,
          "the signature refers to something else than the element it is in");
}

// Once for the process and for good. A program that starts the library elsewhere leaves this out.
void startXmlsec() {
  static const bool started = [] {
    xmlInitParser();
    xmlSecErrorsDefaultCallbackEnableOutput(0);
    return xmlSecInit() == 0 && xmlSecCryptoAppInit(nullptr) == 0 && xmlSecCryptoInit() == 0;
  }();
  require(started, "the signature library does not start");
}

// The very bytes whose digest was signed: whatever the signature library looked at, nothing but
// that is read later. Comments are gone from them, and so is the signature itself.
std::string signedText(xmlNode* signature, std::string_view certificatePem) {
  Owned<xmlSecKey> key(
      xmlSecCryptoAppKeyLoadMemory(reinterpret_cast<const xmlSecByte*>(certificatePem.data()),
                                   static_cast<xmlSecSize>(certificatePem.size()),
                                   xmlSecKeyDataFormatCertPem, nullptr, nullptr, nullptr));
  require(key != nullptr, "the certificate cannot be read");

  // The only identifier that the document knows is that of the element in hand.
  xmlAttr* const identifier = xmlHasNsProp(signature->parent, xmlText("ID"), nullptr);
  const std::string value = attribute(signature->parent, "ID");
  require(xmlAddID(nullptr, signature->doc, xmlText(value), identifier) != nullptr,
          "an identifier is used twice");

  // Anybody can put a key into a message: the certificate's is the only one there is.
  for (xmlNode* keyInfo : children(signature, kSignature, "KeyInfo")) {
    xmlUnlinkNode(keyInfo);
    xmlFreeNode(keyInfo);
  }
  const Owned<xmlSecDSigCtx> context(xmlSecDSigCtxCreate(nullptr));
  require(context != nullptr, "the signature library does not start");
  context->signKey = key.release();
  context->flags = XMLSEC_DSIG_FLAGS_STORE_SIGNEDINFO_REFERENCES;
  context->enabledReferenceUris = xmlSecTransformUriTypeSameDocument;
  // The same lists once more: an attribute that reads differently there must not open a way.
  bool enabled =
      xmlSecDSigCtxEnableSignatureTransform(context.get(), xmlSecTransformExclC14NId) == 0;
  for (xmlSecTransformId each : signatureMethods()) {
    enabled = enabled && xmlSecDSigCtxEnableSignatureTransform(context.get(), each) == 0;
  }
  for (const Algorithms& list : {transforms(), digestMethods()}) {
    for (xmlSecTransformId each : list) {
      enabled = enabled && xmlSecDSigCtxEnableReferenceTransform(context.get(), each) == 0;
    }
  }
  require(enabled, "the signature library does not start");

  const bool verified = xmlSecDSigCtxVerify(context.get(), signature) == 0 &&
                        context->status == xmlSecDSigStatusSucceeded;
  require(verified, "the signature is not the certificate holder's, or the text was changed");
  auto* const reference =
      static_cast<xmlSecDSigReferenceCtx*>(xmlSecPtrListGetItem(&context->signedInfoReferences, 0));
  xmlSecBuffer* const buffer = xmlSecDSigReferenceCtxGetPreDigestBuffer(reference);
  require(buffer != nullptr, "the signed text was not kept");
  return {reinterpret_cast<const char*>(xmlSecBufferGetData(buffer)), xmlSecBufferGetSize(buffer)};
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

std::string readableText(const std::string& signedXml, const xmlNode* original) {
  const Owned<xmlDoc> document = parsed(signedXml);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  // Canonical form drops prefixes that only values use, as that of xsi:type does. What they stand
  // for is not signed then, but only the schema asks.
  const Owned<xmlNs*> inScope(xmlGetNsList(original->doc, original));
  for (xmlNs** each = inScope.get(); each != nullptr && *each != nullptr; ++each) {
    const xmlChar* const prefix = (*each)->prefix;
    if (prefix != nullptr && xmlSearchNs(document.get(), root, prefix) == nullptr) {
      xmlNewNs(root, (*each)->href, prefix);
    }
  }
  if (is(root, kAssertion, "Assertion")) wrap(document.get(), root);

  xmlChar* dumped = nullptr;
  int length = 0;
  xmlDocDumpMemoryEnc(document.get(), &dumped, &length, "UTF-8");
  const Owned<xmlChar> owned(dumped);
  require(owned != nullptr, "the signed text cannot be written");
  return text(owned);
}

}  // namespace

std::optional<std::string> verifiedAnswer(std::string_view answer, std::string_view certificatePem,
                                          std::string& reason) try {
  startXmlsec();
  const Owned<xmlDoc> document = parsed(answer);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  std::set<std::string> identifiers;
  requireDistinctIdentifiers(root, identifiers);
  xmlNode* const signature = chosenSignature(root);
  requirePlainSignature(signature);
  const std::string signedXml = signedText(signature, certificatePem);
  return readableText(signedXml, signature->parent);
} catch (const std::runtime_error& refusal) {
  reason = refusal.what();
  return std::nullopt;
}

}  // namespace verify_then_read
