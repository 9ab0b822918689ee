#include "kestrelink/saml/elements/SAMLElementClasses.h"

#include <string_view>

#include "kestrelink/saml/elements/SAMLAssertion.h"
#include "kestrelink/saml/elements/SAMLAttributeQueryElement.h"
#include "kestrelink/saml/elements/SAMLAuthNRequestElement.h"
#include "kestrelink/saml/elements/SAMLAuthZDecisionQueryElement.h"
#include "kestrelink/saml/elements/SAMLEvidence.h"
#include "kestrelink/saml/elements/SAMLKeyInfo.h"
#include "kestrelink/saml/elements/SAMLLogoutRequestElement.h"
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
    {kAttributeQueryElementName, &SAMLAttributeQueryElement::elementClass},
    {kAuthNStatementElementName, &SAMLAuthNStatement::elementClass},
    {kAuthNRequestElementName, &SAMLAuthNRequestElement::elementClass},
    {kAuthZDecisionStatementElementName, &SAMLAuthZDecision::elementClass},
    {kAuthzDecisionQueryElementName, &SAMLAuthZDecisionQueryElement::elementClass},
    {kConditionsElementName, &SAMLConditions::elementClass},
    {kDSAKeyValueElementName, &SAMLDSAKeyValue::elementClass},
    {kEvidenceElementName, &SAMLEvidence::elementClass},
    {kIDPEntryElementName, &SAMLIDPEntry::elementClass},
    {kKeyInfoElementName, &SAMLKeyInfo::elementClass},
    {kRetrievalMethodElementName, &SAMLKeyRetrievalMethod::elementClass},
    {kLogoutRequestElementName, &SAMLLogoutRequestElement::elementClass},
    {kLogoutResponseElementName, &SAMLLogoutResponseElement::elementClass},
    {kNameIdElementName, &SAMLNameId::elementClass},
    {kNameIdPolicyElementName, &SAMLNameIdPolicy::elementClass},
    {kPGPDataElementName, &SAMLPGPData::elementClass},
    {kResponseElementName, &SAMLResponseElement::elementClass},
    {kRequestedAuthNContextElementName, &SAMLRequestedAuthNContext::elementClass},
    {kRSAKeyValueElementName, &SAMLRSAKeyValue::elementClass},
    {kScopingElementName, &SAMLScoping::elementClass},
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

bool registerAll() {
  for (const auto& [tagName, elementClass] : kRegistrations) {
    XMLWrapperElementFactory::registerClass(elementClass, tagName);
  }
  return true;
}

}  // namespace

void registerSAMLElementClasses() { [[maybe_unused]] static const bool done = registerAll(); }

}  // namespace kestrelink
