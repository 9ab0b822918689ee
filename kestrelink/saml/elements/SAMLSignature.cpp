#include "kestrelink/saml/elements/SAMLSignature.h"

#include <unordered_set>

#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLKeyInfo.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/xml/libxml/DetachedNode.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLSignatureReference::elementClass{
    "SAMLSignatureReference", &makeElementInstance<SAMLSignatureReference>};
constinit const XMLWrapperElementClass SAMLSignedInfo::elementClass{
    "SAMLSignedInfo", &makeElementInstance<SAMLSignedInfo>};
constinit const XMLWrapperElementClass SAMLSignature::elementClass{
    "SAMLSignature", &makeElementInstance<SAMLSignature>};

std::shared_ptr<SAMLSignatureReference> SAMLSignatureReference::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLSignatureReference>(kReferenceElementName);
}

std::optional<std::string> SAMLSignatureReference::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<std::string> SAMLSignatureReference::uri() const {
  return attributeText(kURIAttributeName);
}
std::optional<std::string> SAMLSignatureReference::type() const {
  return attributeText(kTypeAttributeName);
}
std::vector<std::string> SAMLSignatureReference::transforms() const { return transformsOf(*this); }
std::optional<std::string> SAMLSignatureReference::digestMethod() const {
  return childAttributeText(kDigestMethodElementName, kAlgorithmAttributeName);
}
std::optional<Bytes> SAMLSignatureReference::digestValue() const {
  return childBytes(kDigestValueElementName);
}

std::shared_ptr<SAMLSignedInfo> SAMLSignedInfo::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLSignedInfo>(kSignedInfoElementName, signatureNamespaceOnly());
}

std::optional<std::string> SAMLSignedInfo::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<std::string> SAMLSignedInfo::canonicalizationMethod() const {
  return childAttributeText(kCanonicalizationMethodElementName, kAlgorithmAttributeName);
}
std::optional<std::string> SAMLSignedInfo::signatureMethod() const {
  return childAttributeText(kSignatureMethodElementName, kAlgorithmAttributeName);
}
std::optional<double> SAMLSignedInfo::signatureMethodLength() const {
  return numberOf(
      childTextOf(firstElementByTagName(kSignatureMethodElementName), kSignatureHMACOutputLength));
}
std::vector<std::shared_ptr<SAMLSignatureReference>> SAMLSignedInfo::references() const {
  return children<SAMLSignatureReference>(kReferenceElementName);
}

DetachedNode SAMLSignedInfo::xmlNode(ErrorOut error) {
  List ordered = {firstElementByTagName(kCanonicalizationMethodElementName),
                  firstElementByTagName(kSignatureMethodElementName)};
  if (!ordered[0] || !ordered[1]) {
    return DetachedNode::refused("Signed information without its methods cannot be written");
  }
  std::unordered_set<std::shared_ptr<XMLWrapperElement>>
      seen;  // each is one child, even if set twice
  for (const auto& reference : getElementsByTagName(kReferenceElementName)) {
    if (seen.insert(reference).second) ordered.push_back(reference);
  }
  setElements(std::move(ordered));
  return SAMLBaseElement::xmlNode(error);
}

std::shared_ptr<SAMLSignature> SAMLSignature::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLSignature>(
      kSignatureElementName, signatureNamespaceOnly(),
      {kSignedInfoElementName, kSignatureValueElementName, kKeyInfoElementName});
}

std::optional<std::string> SAMLSignature::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::shared_ptr<SAMLSignedInfo> SAMLSignature::signedInfo() const {
  return child<SAMLSignedInfo>(kSignedInfoElementName);
}
std::optional<Bytes> SAMLSignature::signatureValue() const {
  return childBytes(kSignatureValueElementName);
}
std::optional<std::string> SAMLSignature::signatureValueId() const {
  return childAttributeText(kSignatureValueElementName, kIdentifierAttributeName);
}
std::shared_ptr<SAMLKeyInfo> SAMLSignature::keyInfo() const {
  return child<SAMLKeyInfo>(kKeyInfoElementName);
}

bool SAMLSignature::isValid() const { return true; }

}  // namespace kestrelink
