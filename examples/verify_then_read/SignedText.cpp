#include "SignedText.h"

#include <xmlsec/crypto.h>
#include <xmlsec/errors.h>
#include <xmlsec/xmldsig.h>
#include <xmlsec/xmlsec.h>

#include <algorithm>
#include <vector>

#include <libxml/parser.h>
#include <libxml/valid.h>

#include "XmlTree.h"

namespace verify_then_read {
namespace {

using Algorithms = std::vector<xmlSecTransformId>;

Algorithms signatureMethods() {
  return {xmlSecTransformRsaSha256Id,   xmlSecTransformRsaSha384Id,   xmlSecTransformRsaSha512Id,
          xmlSecTransformEcdsaSha256Id, xmlSecTransformEcdsaSha384Id, xmlSecTransformEcdsaSha512Id};
}
Algorithms digestMethods() {
  return {xmlSecTransformSha256Id, xmlSecTransformSha384Id, xmlSecTransformSha512Id};
}
// Comments are never part of what "#" and an ID refer to, so the forms with them add none.
Algorithms canonicalForms() {
  return {xmlSecTransformExclC14NId, xmlSecTransformExclC14NWithCommentsId,
          xmlSecTransformInclC14NId, xmlSecTransformInclC14NWithCommentsId};
}

bool isOneOf(const Algorithms& allowed, const xmlNode* method) {
  const std::string name = attribute(method, "Algorithm");
  return std::any_of(allowed.begin(), allowed.end(), [&name](xmlSecTransformId each) {
    return name == reinterpret_cast<const char*>(each->href);
  });
}

void requireAlgorithm(xmlNode* parent, const char* name, const Algorithms& allowed,
                      const char* reason) {
  require(isOneOf(allowed, onlyChild(parent, kSignature, name, reason)), reason);
}

// Neither more nor fewer: with another transform, what is signed is a selection of the element.
void requireTransforms(xmlNode* reference) {
  xmlNode* const list = onlyChild(reference, kSignature, "Transforms", "there are no transforms");
  const auto used = children(list, kSignature, "Transform");
  require(used.size() == 2 && isOneOf({xmlSecTransformEnvelopedId}, used[0]) &&
              isOneOf(canonicalForms(), used[1]),
          "the transforms are not allowed");
}

void requireReferenceToParent(const xmlNode* signature, const xmlNode* reference) {
  // An ID that is no name could make an XPointer expression of the reference.
  const std::string identifier = attribute(signature->parent, "ID");
  require(xmlValidateNCName(xmlText(identifier), 0) == 0, "the signed element's ID is no name");
  require(attribute(reference, "URI") == "#" + identifier,
          "the signature refers to something else than the element it is in");
}

void requirePlainSignature(xmlNode* signature) {
  require(children(signature, kSignature, "Object").empty(), "the signature has an Object");
  xmlNode* const info = onlyChild(signature, kSignature, "SignedInfo", "not one SignedInfo");
  requireAlgorithm(info, "CanonicalizationMethod", canonicalForms(),
                   "the canonicalization is not allowed");
  requireAlgorithm(info, "SignatureMethod", signatureMethods(),
                   "the signature algorithm is not allowed");
  xmlNode* const reference =
      onlyChild(info, kSignature, "Reference", "the signature has not one Reference");
  requireAlgorithm(reference, "DigestMethod", digestMethods(),
                   "the digest algorithm is not allowed");
  requireTransforms(reference);
  requireReferenceToParent(signature, reference);
}

Owned<xmlSecKey> keyOf(std::string_view certificatePem) {
  Owned<xmlSecKey> key(
      xmlSecCryptoAppKeyLoadMemory(reinterpret_cast<const xmlSecByte*>(certificatePem.data()),
                                   static_cast<xmlSecSize>(certificatePem.size()),
                                   xmlSecKeyDataFormatCertPem, nullptr, nullptr, nullptr));
  require(key != nullptr, "the certificate cannot be read");
  return key;
}

// The lists once more, for xmlsec: an attribute that it reads differently must not open a way.
Owned<xmlSecDSigCtx> contextWith(Owned<xmlSecKey> key) {
  Owned<xmlSecDSigCtx> context(xmlSecDSigCtxCreate(nullptr));
  require(context != nullptr, "the signature library does not start");
  context->signKey = key.release();
  context->flags = XMLSEC_DSIG_FLAGS_STORE_SIGNEDINFO_REFERENCES;
  context->enabledReferenceUris = xmlSecTransformUriTypeSameDocument;
  bool enabled = true;
  for (const Algorithms& list : {canonicalForms(), signatureMethods()}) {
    for (xmlSecTransformId each : list) {
      enabled = enabled && xmlSecDSigCtxEnableSignatureTransform(context.get(), each) == 0;
    }
  }
  for (const Algorithms& list : {{xmlSecTransformEnvelopedId}, canonicalForms(), digestMethods()}) {
    for (xmlSecTransformId each : list) {
      enabled = enabled && xmlSecDSigCtxEnableReferenceTransform(context.get(), each) == 0;
    }
  }
  require(enabled, "the signature library does not start");
  return context;
}

// The only identifier that the document knows is that of the element in hand.
void registerIdentifier(const xmlNode* element) {
  xmlAttr* const identifier = xmlHasNsProp(element, xmlText("ID"), nullptr);
  const std::string value = attribute(element, "ID");
  require(xmlAddID(nullptr, element->doc, xmlText(value), identifier) != nullptr,
          "an identifier is used twice");
}

// Anybody can put a key into a message. The certificate's is the only one that counts.
void removeKeyInfo(xmlNode* signature) {
  for (xmlNode* keyInfo : children(signature, kSignature, "KeyInfo")) {
    xmlUnlinkNode(keyInfo);
    xmlFreeNode(keyInfo);
  }
}

}  // namespace

void startXmlsec() {
  static const bool started = [] {
    xmlInitParser();
    xmlSecErrorsDefaultCallbackEnableOutput(0);
    return xmlSecInit() == 0 && xmlSecCryptoAppInit(nullptr) == 0 && xmlSecCryptoInit() == 0;
  }();
  require(started, "the signature library does not start");
}

std::string signedText(xmlNode* signature, std::string_view certificatePem) {
  startXmlsec();
  requirePlainSignature(signature);
  const Owned<xmlSecDSigCtx> context = contextWith(keyOf(certificatePem));
  registerIdentifier(signature->parent);
  removeKeyInfo(signature);
  const bool verified = xmlSecDSigCtxVerify(context.get(), signature) == 0 &&
                        context->status == xmlSecDSigStatusSucceeded;
  require(verified, "the signature is not the certificate holder's, or the text was changed");

  auto* const reference =
      static_cast<xmlSecDSigReferenceCtx*>(xmlSecPtrListGetItem(&context->signedInfoReferences, 0));
  xmlSecBuffer* const buffer = xmlSecDSigReferenceCtxGetPreDigestBuffer(reference);
  require(buffer != nullptr, "the signed text was not kept");
  return {reinterpret_cast<const char*>(xmlSecBufferGetData(buffer)), xmlSecBufferGetSize(buffer)};
}

}  // namespace verify_then_read
