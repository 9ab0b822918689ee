#include "kestrelink/signin/Trusted.h"

#include <new>
#include <set>

#include <libxml/c14n.h>

#include "kestrelink/signin/Declarations.h"
#include "kestrelink/signin/Decryption.h"
#include "kestrelink/signin/Signature.h"

namespace kestrelink::signin {
namespace {

constexpr const char* kSuccess = "urn:oasis:names:tc:SAML:2.0:status:Success";

// Any spelling in any namespace: which attributes are identifiers depends on who reads them.
void requireDistinctIdentifiers(const xmlNode* element, std::set<std::string>& seen) {
  for (const xmlAttr* each = element->properties; each != nullptr; each = each->next) {
    if (xmlStrcasecmp(each->name, xmlText("id")) != 0) continue;
    const Owned<xmlChar> value(xmlNodeListGetString(element->doc, each->children, 1));
    const std::string identifier = textOf(value.get());
    if (seen.insert(identifier).second) continue;
    refuse(Reason::duplicateId, "the identifier " + quoted(identifier) + " is used twice");
  }
  for (xmlNode* child = element->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) requireDistinctIdentifiers(child, seen);
  }
}

// xmlsec makes canonical forms before it verifies anything. In each element they may write every
// namespace in use out again, and search all that are in scope for each of them and for each prefix
// of the list.
void requireFewDeclarations(const xmlNode* element, int inScope) {
  constexpr int kLongest = 1000, kMost = 100, kLongestList = 100;
  for (const xmlNs* each = element->nsDef; each != nullptr; each = each->next, ++inScope) {
    require(xmlStrlen(each->href) <= kLongest, Reason::notXml, "a namespace is too long");
  }
  require(inScope <= kMost, Reason::notXml, "too many namespaces are declared");
  const Owned<xmlChar> prefixes(xmlGetProp(element, xmlText("PrefixList")));
  require(xmlStrlen(prefixes.get()) <= kLongestList, Reason::notXml,
          "a list of prefixes is too long");
  for (xmlNode* child = element->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) requireFewDeclarations(child, inScope);
  }
}

void requireDistinctIdentifiers(const xmlDoc* document) {
  std::set<std::string> identifiers;
  requireDistinctIdentifiers(xmlDocGetRootElement(document), identifiers);
}

// Before any canonical form is made of what nobody vouches for.
void requirePlain(const xmlDoc* document) {
  requireDistinctIdentifiers(document);
  requireFewDeclarations(xmlDocGetRootElement(document), 0);
}

// Null when it has none.
xmlNode* signatureOf(const xmlNode* element) {
  const auto found = children(element, kSignature, "Signature");
  require(found.size() < 2, Reason::signatureForm, "an element has several signatures");
  return found.empty() ? nullptr : found.front();
}

Owned<xmlDoc> copyOfSigned(xmlNode* signature, const Signer& signer) {
  xmlNode* const original = signature->parent;
  const std::string text = signedText(signature, signer);
  return withDeclarations(text, original, signature);
}

int isWithin(void* element, xmlNode* node, xmlNode* parent) noexcept {
  const bool isOwned = node->type == XML_NAMESPACE_DECL || node->type == XML_ATTRIBUTE_NODE;
  for (xmlNode* each = isOwned ? parent : node; each != nullptr; each = each->parent) {
    if (each == element) return 1;
  }
  return 0;
}

struct CloseBuffer {
  void operator()(xmlOutputBuffer* buffer) const { xmlOutputBufferClose(buffer); }
};

// In the canonical form too, for the same reader's sake, with every declaration in scope.
Owned<xmlDoc> copyOf(xmlNode* element) {
  const std::unique_ptr<xmlOutputBuffer, CloseBuffer> buffer(xmlAllocOutputBuffer(nullptr));
  if (!buffer) throw std::bad_alloc();
  const int made =
      xmlC14NExecute(element->doc, &isWithin, element, XML_C14N_1_0, nullptr, 0, buffer.get());
  require(made >= 0, Reason::notXml, "the message has no canonical form");
  return reparsed({reinterpret_cast<const char*>(xmlOutputBufferGetContent(buffer.get())),
                   xmlOutputBufferGetSize(buffer.get())});
}

// A response around a signed assertion. Nothing of the unsigned one is copied: identifier, instant
// and issuer are the assertion's. The status is success whatever the unsigned one said, for anybody
// could have written that; the provider's yes is the assertion it signed.
void wrap(xmlDoc* document) {
  xmlNode* const assertion = xmlDocGetRootElement(document);
  const xmlNode* const issuer = firstChild(assertion, kAssertion, "Issuer");
  require(issuer != nullptr, Reason::notValid, "the signed assertion has no issuer");
  const std::string identifier = attribute(assertion, "ID") + ".response";
  const std::string instant = attribute(assertion, "IssueInstant");

  xmlNode* const response = made(xmlNewDocNode(document, nullptr, xmlText("Response"), nullptr));
  xmlDocSetRootElement(document, response);
  xmlAddChild(response, assertion);
  xmlNs* const protocol = made(xmlNewNs(response, xmlText(kProtocol), xmlText("samlp")));
  xmlSetNs(response, protocol);
  made(xmlNewProp(response, xmlText("ID"), xmlText(identifier)));
  made(xmlNewProp(response, xmlText("Version"), xmlText("2.0")));
  made(xmlNewProp(response, xmlText("IssueInstant"), xmlText(instant)));
  xmlAddPrevSibling(assertion, made(xmlDocCopyNode(const_cast<xmlNode*>(issuer), document, 1)));
  xmlNode* const status = xmlAddPrevSibling(
      assertion, made(xmlNewDocNode(document, protocol, xmlText("Status"), nullptr)));
  xmlNode* const code = made(xmlNewChild(status, protocol, xmlText("StatusCode"), nullptr));
  made(xmlNewProp(code, xmlText("Value"), xmlText(kSuccess)));
}

// The steps, with what they share.
class Way {
 public:
  Way(const Received& received, xmlDoc* document, const Client& client, const Provider& provider,
      const Policy& policy)
      : received_(received),
        document_(document),
        signer_{provider.signingCertificates, policy.acceptSha1, policy.leastRsaBits},
        decryptor_{client.decryptionKeys, policy.mostBytes} {}

  Trusted go() const {
    requirePlain(document_);
    xmlNode* const message = messageIn(document_);
    if (received_.signature) verify(*received_.signature, signer_);
    if (xmlNode* const signature = signatureOf(message)) {
      return {opened(copyOfSigned(signature, signer_)), true};
    }
    if (received_.signature) return {opened(copyOf(message)), true};
    require(!is(message, kProtocol, "LogoutResponse"), Reason::notSigned,
            "the logout response is not signed");
    return unsignedResponse(message);
  }

 private:
  Trusted unsignedResponse(xmlNode* message) const {
    const auto assertions = children(message, kAssertion, "Assertion");
    const auto encrypted = children(message, kAssertion, "EncryptedAssertion");
    if (assertions.empty() && encrypted.empty()) return {copyOf(message), false};
    require(assertions.size() + encrypted.size() == 1, Reason::notSigned,
            "the response is unsigned and has several assertions");
    auto document = encrypted.empty() ? signedAssertion(assertions.front()) : decrypted(message);
    wrap(document.get());
    decryptBelow(xmlDocGetRootElement(document.get()), decryptor_);
    requireDistinctIdentifiers(document.get());
    return {std::move(document), true};
  }

  Owned<xmlDoc> signedAssertion(const xmlNode* assertion) const {
    xmlNode* const signature = signatureOf(assertion);
    require(signature != nullptr, Reason::notSigned,
            "neither the response nor its assertion is signed");
    return copyOfSigned(signature, signer_);
  }

  // Until the inside is verified, nobody learns why it is refused.
  Owned<xmlDoc> decrypted(xmlNode* message) const {
    const Owned<xmlDoc> copy = copyOf(message);
    xmlNode* const response = xmlDocGetRootElement(copy.get());
    decryptAssertions(response, decryptor_);
    try {
      requirePlain(copy.get());
      return signedAssertion(firstChild(response, kAssertion, "Assertion"));
    } catch (const Refusal&) {
      refuseEncrypted();
    }
  }

  // A verified response, with signatures inside before what they cover is decrypted.
  Owned<xmlDoc> opened(Owned<xmlDoc> document) const {
    xmlNode* const root = xmlDocGetRootElement(document.get());
    decryptAssertions(root, decryptor_);
    requireDistinctIdentifiers(document.get());
    for (const xmlNode* assertion : children(root, kAssertion, "Assertion")) {
      if (xmlNode* const signature = signatureOf(assertion)) signedText(signature, signer_);
    }
    decryptBelow(root, decryptor_);
    requireDistinctIdentifiers(document.get());
    return document;
  }

  const Received& received_;
  xmlDoc* document_;
  Signer signer_;
  Decryptor decryptor_;
};

}  // namespace

xmlNode* messageIn(xmlDoc* document) {
  xmlNode* const root = xmlDocGetRootElement(document);
  if (!is(root, kSoap, "Envelope")) return root;
  const auto bodies = children(root, kSoap, "Body");
  xmlNode* const message = bodies.size() == 1 ? xmlFirstElementChild(bodies.front()) : nullptr;
  require(message != nullptr && xmlNextElementSibling(message) == nullptr, Reason::wrongMessage,
          "the SOAP envelope has not exactly one message");
  return message;
}

Trusted trusted(const Received& received, xmlDoc* document, const Client& client,
                const Provider& provider, const Policy& policy) {
  return Way(received, document, client, provider, policy).go();
}

}  // namespace kestrelink::signin
