// Key information in a signature (W3C XML Signature, section 4.4). The library does not use it.
#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// "DSAKeyValue".
class KESTRELINK_TYPE SAMLDSAKeyValue : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLDSAKeyValue> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<Bytes> p() const;
  virtual std::optional<Bytes> q() const;
  virtual std::optional<Bytes> g() const;
  virtual std::optional<Bytes> y() const;
  virtual std::optional<Bytes> j() const;
  virtual std::optional<Bytes> seed() const;
  virtual std::optional<Bytes> pgenCounter() const;
};

/// "RSAKeyValue".
class KESTRELINK_TYPE SAMLRSAKeyValue : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLRSAKeyValue> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<Bytes> modulus() const;
  virtual std::optional<Bytes> exponent() const;
};

/// "KeyValue".
class KESTRELINK_TYPE SAMLSignatureKeyValue : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLSignatureKeyValue> createElement(
      ErrorOut error = nullptr);

  virtual std::shared_ptr<SAMLDSAKeyValue> dsaKeyValue() const;
  virtual std::shared_ptr<SAMLRSAKeyValue> rsaKeyValue() const;
};

/// "X509Data". Its children are looked up with a prefix ("ds:X509Certificate"), so every property
/// is `std::nullopt` for a parsed message; use `firstElementByTagName("X509Certificate")`.
class KESTRELINK_TYPE SAMLX509Data : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLX509Data> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> issuerName() const;
  virtual std::optional<double> serialNumber() const;
  virtual std::optional<Bytes> ski() const;
  virtual std::optional<std::string> subjectName() const;
  virtual std::optional<Bytes> certificate() const;
  virtual std::optional<Bytes> crl() const;
};

/// "PGPData". Looked up with a prefix too ("ds:PGPKeyID"): `std::nullopt` for a parsed message.
class KESTRELINK_TYPE SAMLPGPData : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLPGPData> createElement(ErrorOut error = nullptr);

  virtual std::optional<Bytes> keyId() const;
  virtual std::optional<Bytes> packet() const;
};

/// "RetrievalMethod".
class KESTRELINK_TYPE SAMLKeyRetrievalMethod : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLKeyRetrievalMethod> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> uri() const;
  virtual std::optional<std::string> type() const;
  virtual std::vector<std::string> transforms() const;
};

/// "KeyInfo".
class KESTRELINK_TYPE SAMLKeyInfo : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLKeyInfo> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::optional<std::string> keyName() const;
  virtual std::shared_ptr<SAMLSignatureKeyValue> keyValue() const;
  virtual std::shared_ptr<SAMLKeyRetrievalMethod> retrievalMethod() const;
  virtual std::shared_ptr<SAMLX509Data> x509Data() const;
  virtual std::shared_ptr<SAMLPGPData> pgpData() const;
  /// Looked up with the prefix, as "ds:SPKISexp": `std::nullopt` for a parsed message.
  virtual std::optional<Bytes> spkiSexpData() const;
  virtual std::optional<std::string> mgmtData() const;
};

}  // namespace kestrelink
