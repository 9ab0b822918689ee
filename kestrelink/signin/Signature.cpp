#include "kestrelink/signin/Signature.h"

#include <xmlsec/templates.h>
#include <xmlsec/xmldsig.h>

#include <new>
#include <optional>

#include <libxml/valid.h>

#include "kestrelink/signin/Algorithms.h"
#include "kestrelink/signin/Certificates.h"
#include "kestrelink/signin/Keys.h"
#include "kestrelink/signin/XmlSecurity.h"
#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {
namespace {

constexpr const char* kEnveloped = "http://www.w3.org/2000/09/xmldsig#enveloped-signature";

xmlNode* onlyChild(const xmlNode* parent, const char* name, const char* explanation) {
  const auto found = children(parent, kSignature, name);
  require(found.size() == 1, Reason::signatureForm, explanation);
  return found.front();
}

std::string algorithmOf(const xmlNode* parent, const char* name, const char* explanation) {
  return attribute(onlyChild(parent, name, explanation), "Algorithm");
}

// Neither more nor fewer: with another transform, what is signed is a selection of the element.
void requireTransforms(const xmlNode* reference) {
  const xmlNode* const list =
      onlyChild(reference, "Transforms", "the signature has no list of transforms");
  const auto used = children(list, kSignature, "Transform");
  require(used.size() == 2 && attribute(used[0], "Algorithm") == kEnveloped, Reason::signatureForm,
          "the signature's transforms are not the enveloped signature and one canonical form");
  accepted(canonicalForms(), attribute(used[1], "Algorithm"), false, "transform");
}

void requireReferenceToParent(const xmlNode* signature, const xmlNode* reference) {
  // An ID that is no name could make an XPointer expression of the reference.
  const std::string identifier = attribute(signature->parent, "ID");
  require(xmlValidateNCName(xmlText(identifier), 0) == 0, Reason::signatureForm,
          "the signed element's ID is no name");
  const std::string uri = attribute(reference, "URI");
  if (uri == "#" + identifier) return;
  refuse(Reason::signatureForm,
         "the signature refers to " + quoted(uri) + ", not to the element it is in");
}

void requirePlainSignature(const xmlNode* signature, bool acceptSha1) {
  require(children(signature, kSignature, "Object").empty(), Reason::signatureForm,
          "the signature has an Object");
  const xmlNode* const info =
      onlyChild(signature, "SignedInfo", "the signature has not one SignedInfo");
  accepted(canonicalForms(),
           algorithmOf(info, "CanonicalizationMethod",
                       "the signature has not one canonicalization method"),
           false, "canonicalization method");
  accepted(signatureMethods(),
           algorithmOf(info, "SignatureMethod", "the signature has not one algorithm"), acceptSha1,
           "signature algorithm");
  const xmlNode* const reference =
      onlyChild(info, "Reference", "the signature has not one Reference");
  accepted(digestMethods(),
           algorithmOf(reference, "DigestMethod", "the signature has not one digest algorithm"),
           acceptSha1, "digest algorithm");
  requireTransforms(reference);
  requireReferenceToParent(signature, reference);
}

// The lists once more, for xmlsec: an attribute that it reads differently must not open a way.
void restrict(xmlSecDSigCtx* context, bool acceptSha1) {
  context->flags = XMLSEC_DSIG_FLAGS_STORE_SIGNEDINFO_REFERENCES;
  context->enabledReferenceUris = xmlSecTransformUriTypeSameDocument;
  bool enabled = xmlSecDSigCtxEnableReferenceTransform(context, xmlSecTransformEnvelopedId) == 0;
  const auto enable = [&](Algorithms list, auto operation) {
    for (const Algorithm& each : list) {
      if (each.isSha1 && !acceptSha1) continue;
      enabled = enabled && operation(context, each.transform()) == 0;
    }
  };
  enable(canonicalForms(), &xmlSecDSigCtxEnableSignatureTransform);
  enable(signatureMethods(), &xmlSecDSigCtxEnableSignatureTransform);
  enable(canonicalForms(), &xmlSecDSigCtxEnableReferenceTransform);
  enable(digestMethods(), &xmlSecDSigCtxEnableReferenceTransform);
  if (!enabled) throw std::bad_alloc();
}

// The only identifier that the document knows is that of the element in hand.
void registerIdentifier(const xmlNode* element) {
  xmlAttr* const identifier = xmlHasNsProp(element, xmlText("ID"), nullptr);
  const std::string value = attribute(element, "ID");
  require(xmlAddID(nullptr, element->doc, xmlText(value), identifier) != nullptr,
          Reason::duplicateId, "an identifier is used twice");
}

// Anybody can put a key into a message. The certificate's is the only one that counts.
void removeKeyInfo(xmlNode* signature) {
  for (xmlNode* keyInfo : children(signature, kSignature, "KeyInfo")) {
    xmlUnlinkNode(keyInfo);
    xmlFreeNode(keyInfo);
  }
}

// Does not change the document.
std::optional<std::string> textSignedWith(EVP_PKEY* key, xmlNode* signature, bool acceptSha1) {
  const SignatureContext context = contextWith(key);
  restrict(context.get(), acceptSha1);
  if (xmlSecDSigCtxVerify(context.get(), signature) != 0 ||
      context->status != xmlSecDSigStatusSucceeded ||
      xmlSecPtrListGetSize(&context->signedInfoReferences) != 1) {
    return std::nullopt;
  }
  auto* const reference =
      static_cast<xmlSecDSigReferenceCtx*>(xmlSecPtrListGetItem(&context->signedInfoReferences, 0));
  xmlSecBuffer* const buffer = xmlSecDSigReferenceCtxGetPreDigestBuffer(reference);
  if (buffer == nullptr) throw std::bad_alloc();
  return std::string(reinterpret_cast<const char*>(xmlSecBufferGetData(buffer)),
                     xmlSecBufferGetSize(buffer));
}

void addCertificate(xmlNode* signature, const std::string& pem) {
  const auto certificate = base64OfCertificate(pem);
  require(certificate.has_value(), Reason::notConfigured,
          "the client's signing certificate cannot be read");
  xmlNode* parent = signature;
  for (const char* name : {"KeyInfo", "X509Data"}) {
    parent = made(xmlNewChild(parent, signature->ns, xmlText(name), nullptr));
  }
  made(xmlNewTextChild(parent, signature->ns, xmlText("X509Certificate"), xmlText(*certificate)));
}

// After the issuer, where the schema wants it.
void insert(xmlNode* signature, xmlNode* root) {
  if (xmlNode* const issuer = firstChild(root, kAssertion, "Issuer")) {
    xmlAddNextSibling(issuer, signature);
  } else if (root->children != nullptr) {
    xmlAddPrevSibling(root->children, signature);
  } else {
    xmlAddChild(root, signature);
  }
}

xmlNode* newSignature(xmlNode* root, const Algorithm& method) {
  xmlNode* const signature = made(xmlSecTmplSignatureCreateNsPref(
      root->doc, xmlSecTransformExclC14NId, method.transform(), nullptr, xmlText("ds")));
  insert(signature, root);
  const std::string uri = "#" + attribute(root, "ID");
  xmlNode* const reference = made(xmlSecTmplSignatureAddReference(
      signature, xmlSecTransformSha256Id, nullptr, xmlText(uri), nullptr));
  made(xmlSecTmplReferenceAddTransform(reference, xmlSecTransformEnvelopedId));
  made(xmlSecTmplReferenceAddTransform(reference, xmlSecTransformExclC14NId));
  return signature;
}

}  // namespace

std::string signedText(xmlNode* signature, const Signer& signer) {
  startXmlsec();
  requirePlainSignature(signature, signer.acceptSha1);
  registerIdentifier(signature->parent);
  removeKeyInfo(signature);
  std::optional<std::string> text;
  requireSigned(signer, [&](EVP_PKEY* key) {
    text = textSignedWith(key, signature, signer.acceptSha1);
    return text.has_value();
  });
  return *text;
}

std::string withSignature(const std::string& xml, const std::string& keyPem,
                          const std::string& certificatePem) {
  startXmlsec();
  const Key key = privateKeyOf(keyPem);
  const Owned<xmlDoc> document = reparsed(xml);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  xmlNode* const signature = newSignature(root, methodOf(key.get()));
  registerIdentifier(root);
  const SignatureContext context = contextWith(key.get());
  require(xmlSecDSigCtxSign(context.get(), signature) == 0, Reason::notConfigured,
          "the client's signing key does not sign");
  if (!certificatePem.empty()) addCertificate(signature, certificatePem);
  return written(document.get());
}

}  // namespace kestrelink::signin
