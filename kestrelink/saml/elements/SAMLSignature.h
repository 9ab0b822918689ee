// XML Signature elements (W3C XML Signature, sections 4.1 to 4.3). They are read and not verified:
// no digest is computed, no key used, no certificate checked.
#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

class SAMLKeyInfo;

/// "Reference": what is signed, and its digest.
class KESTRELINK_TYPE SAMLSignatureReference : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLSignatureReference> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::optional<std::string> uri() const;
  virtual std::optional<std::string> type() const;
  /// The algorithm of each transform, in order; a transform without one is skipped.
  virtual std::vector<std::string> transforms() const;
  virtual std::optional<std::string> digestMethod() const;
  virtual std::optional<Bytes> digestValue() const;
};

/// "SignedInfo".
class KESTRELINK_TYPE SAMLSignedInfo : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLSignedInfo> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::optional<std::string> canonicalizationMethod() const;
  virtual std::optional<std::string> signatureMethod() const;
  /// The "HMACOutputLength" inside "SignatureMethod".
  virtual std::optional<double> signatureMethodLength() const;
  virtual std::vector<std::shared_ptr<SAMLSignatureReference>> references() const;

  /// Writes the canonicalisation method, the signature method and the references, and removes other
  /// children. Without one of the methods nothing is removed and no node is returned; the log says
  /// so.
  DetachedNode xmlNode(ErrorOut error = nullptr) override;
};

/// "Signature".
class KESTRELINK_TYPE SAMLSignature : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLSignature> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::shared_ptr<SAMLSignedInfo> signedInfo() const;
  virtual std::optional<Bytes> signatureValue() const;
  virtual std::optional<std::string> signatureValueId() const;
  virtual std::shared_ptr<SAMLKeyInfo> keyInfo() const;

  /// Always true; nothing is checked. Verify the signature first, before the message is passed to
  /// this library.
  [[nodiscard]] virtual bool isValid() const;
};

}  // namespace kestrelink
