#include "kestrelink/saml/SAMLElementClasses.h"

#include <string_view>

#include "kestrelink/saml/elements/SAMLAssertion.h"
#include "kestrelink/saml/elements/SAMLEvidence.h"
#include "kestrelink/saml/elements/SAMLKeyInfo.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLResponseElement.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"

namespace kestrelink {
namespace {

struct Registration {
  std::string_view tagName;
  const XMLWrapperElementClass* elementClass;
};

constexpr Registration kRegistrations[] = {
    {kAssertionElementName, &SAMLAssertion::elementClass},
    {kAdviceElementName, &SAMLAdvice::elementClass},
    {kAttributeElementName, &SAMLAttribute::elementClass},
    {kAuthNStatementElementName, &SAMLAuthNStatement::elementClass},
    {kAuthZDecisionStatementElementName, &SAMLAuthZDecision::elementClass},
    {kConditionsElementName, &SAMLConditions::elementClass},
    {kDSAKeyValueElementName, &SAMLDSAKeyValue::elementClass},
    {kEvidenceElementName, &SAMLEvidence::elementClass},
    {kKeyInfoElementName, &SAMLKeyInfo::elementClass},
    {kRetrievalMethodElementName, &SAMLKeyRetrievalMethod::elementClass},
    {kLogoutResponseElementName, &SAMLLogoutResponseElement::elementClass},
    {kNameIdElementName, &SAMLNameId::elementClass},
    {kPGPDataElementName, &SAMLPGPData::elementClass},
    {kResponseElementName, &SAMLResponseElement::elementClass},
    {kRSAKeyValueElementName, &SAMLRSAKeyValue::elementClass},
    {kSignatureElementName, &SAMLSignature::elementClass},
    {kKeyValueElementName, &SAMLSignatureKeyValue::elementClass},
    {kReferenceElementName, &SAMLSignatureReference::elementClass},
    {kSignedInfoElementName, &SAMLSignedInfo::elementClass},
    {kStatusElementName, &SAMLStatus::elementClass},
    {kStatusCodeElementName, &SAMLStatusCode::elementClass},
    {kSubjectElementName, &SAMLSubject::elementClass},
    {kSubjectConfirmationElementName, &SAMLSubjectConfirmation::elementClass},
    {kX509DataElementName, &SAMLX509Data::elementClass},
};

}  // namespace

void registerSAMLElementClasses() {
  for (const auto& [tagName, elementClass] : kRegistrations) {
    XMLWrapperElementFactory::registerClass(elementClass, tagName);
  }
}

}  // namespace kestrelink
