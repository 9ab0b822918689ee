#include "kestrelink/saml/elements/SAMLKeyInfo.h"

#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/saml/elements/SAMLSignature.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLDSAKeyValue::elementClass{
    "SAMLDSAKeyValue", &makeElementInstance<SAMLDSAKeyValue>};
constinit const XMLWrapperElementClass SAMLRSAKeyValue::elementClass{
    "SAMLRSAKeyValue", &makeElementInstance<SAMLRSAKeyValue>};
constinit const XMLWrapperElementClass SAMLSignatureKeyValue::elementClass{
    "SAMLSignatureKeyValue", &makeElementInstance<SAMLSignatureKeyValue>};
constinit const XMLWrapperElementClass SAMLX509Data::elementClass{
    "SAMLX509Data", &makeElementInstance<SAMLX509Data>};
constinit const XMLWrapperElementClass SAMLPGPData::elementClass{"SAMLPGPData",
                                                                 &makeElementInstance<SAMLPGPData>};
constinit const XMLWrapperElementClass SAMLKeyRetrievalMethod::elementClass{
    "SAMLKeyRetrievalMethod", &makeElementInstance<SAMLKeyRetrievalMethod>};
constinit const XMLWrapperElementClass SAMLKeyInfo::elementClass{"SAMLKeyInfo",
                                                                 &makeElementInstance<SAMLKeyInfo>};

std::shared_ptr<SAMLDSAKeyValue> SAMLDSAKeyValue::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLDSAKeyValue>(kDSAKeyValueElementName);
}

std::optional<Bytes> SAMLDSAKeyValue::p() const { return childBytes(kDSAPElementName); }
std::optional<Bytes> SAMLDSAKeyValue::q() const { return childBytes(kDSAQElementName); }
std::optional<Bytes> SAMLDSAKeyValue::g() const { return childBytes(kDSAGElementName); }
std::optional<Bytes> SAMLDSAKeyValue::y() const { return childBytes(kDSAYElementName); }
std::optional<Bytes> SAMLDSAKeyValue::j() const { return childBytes(kDSAJElementName); }
std::optional<Bytes> SAMLDSAKeyValue::seed() const { return childBytes(kDSASeedElementName); }
std::optional<Bytes> SAMLDSAKeyValue::pgenCounter() const {
  return childBytes(kDSAPgenCounterElementName);
}

std::shared_ptr<SAMLRSAKeyValue> SAMLRSAKeyValue::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLRSAKeyValue>(kRSAKeyValueElementName);
}

std::optional<Bytes> SAMLRSAKeyValue::modulus() const { return childBytes(kModulusElementName); }
std::optional<Bytes> SAMLRSAKeyValue::exponent() const { return childBytes(kExponentElementName); }

std::shared_ptr<SAMLSignatureKeyValue> SAMLSignatureKeyValue::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLSignatureKeyValue>(kKeyValueElementName);
}

std::shared_ptr<SAMLDSAKeyValue> SAMLSignatureKeyValue::dsaKeyValue() const {
  return child<SAMLDSAKeyValue>(kDSAKeyValueElementName);
}
std::shared_ptr<SAMLRSAKeyValue> SAMLSignatureKeyValue::rsaKeyValue() const {
  return child<SAMLRSAKeyValue>(kRSAKeyValueElementName);
}

std::shared_ptr<SAMLX509Data> SAMLX509Data::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLX509Data>(kX509DataElementName);
}

std::optional<std::string> SAMLX509Data::issuerName() const {
  return childTextOf(firstElementByTagName(kSAMLX509IssuerSerialElementName),
                     kSAMLX509IssuerNameElementName);
}
std::optional<double> SAMLX509Data::serialNumber() const {
  return numberOf(childTextOf(firstElementByTagName(kSAMLX509IssuerSerialElementName),
                              kSAMLX509SerialNumberElementName));
}
std::optional<Bytes> SAMLX509Data::ski() const { return childBytes(kSAMLX509SKIElementName); }
std::optional<std::string> SAMLX509Data::subjectName() const {
  return childText(kSAMLX509SubjectNameElementName);
}
std::optional<Bytes> SAMLX509Data::certificate() const {
  return childBytes(kSAMLX509CertificateElementName);
}
std::optional<Bytes> SAMLX509Data::crl() const { return childBytes(kSAMLX509CRLElementName); }

std::shared_ptr<SAMLPGPData> SAMLPGPData::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLPGPData>(kPGPDataElementName);
}

std::optional<Bytes> SAMLPGPData::keyId() const { return childBytes(kSAMLPGPKeyIdElementName); }
std::optional<Bytes> SAMLPGPData::packet() const {
  return childBytes(kSAMLPGPKeyPacketElementName);
}

std::shared_ptr<SAMLKeyRetrievalMethod> SAMLKeyRetrievalMethod::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLKeyRetrievalMethod>(kRetrievalMethodElementName);
}

std::optional<std::string> SAMLKeyRetrievalMethod::uri() const {
  return attributeText(kURIAttributeName);
}
std::optional<std::string> SAMLKeyRetrievalMethod::type() const {
  return attributeText(kTypeAttributeName);
}
std::vector<std::string> SAMLKeyRetrievalMethod::transforms() const { return transformsOf(*this); }

std::shared_ptr<SAMLKeyInfo> SAMLKeyInfo::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLKeyInfo>(kKeyInfoElementName, signatureNamespaceOnly());
}

std::optional<std::string> SAMLKeyInfo::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<std::string> SAMLKeyInfo::keyName() const { return childText(kKeyNameElementName); }
std::shared_ptr<SAMLSignatureKeyValue> SAMLKeyInfo::keyValue() const {
  return child<SAMLSignatureKeyValue>(kKeyValueElementName);
}
std::shared_ptr<SAMLKeyRetrievalMethod> SAMLKeyInfo::retrievalMethod() const {
  return child<SAMLKeyRetrievalMethod>(kRetrievalMethodElementName);
}
std::shared_ptr<SAMLX509Data> SAMLKeyInfo::x509Data() const {
  return child<SAMLX509Data>(kX509DataElementName);
}
std::shared_ptr<SAMLPGPData> SAMLKeyInfo::pgpData() const {
  return child<SAMLPGPData>(kPGPDataElementName);
}
std::optional<Bytes> SAMLKeyInfo::spkiSexpData() const {
  return bytesOf(
      childTextOf(firstElementByTagName(kSPKIDataElementName), kSAMLSPKISexpElementName));
}
std::optional<std::string> SAMLKeyInfo::mgmtData() const { return childText(kMgmtDataElementName); }

}  // namespace kestrelink
