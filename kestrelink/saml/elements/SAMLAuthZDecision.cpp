#include "kestrelink/saml/elements/SAMLAuthZDecision.h"

#include "kestrelink/saml/elements/SAMLEvidence.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLAuthZDecision::elementClass{
    "SAMLAuthZDecision", &makeElementInstance<SAMLAuthZDecision>};

std::shared_ptr<SAMLAuthZDecision> SAMLAuthZDecision::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLAuthZDecision>(kAuthZDecisionStatementElementName,
                                        assertionNamespaceOnly());
}

std::optional<std::string> SAMLAuthZDecision::decision() const {
  return attributeText(kDecisionAttributeName);
}
std::optional<std::string> SAMLAuthZDecision::resource() const {
  return attributeText(kResourceAttributeName);
}
XMLWrapperElement::List SAMLAuthZDecision::actions() const {
  return getElementsByTagName(kActionElementName);
}
std::shared_ptr<SAMLEvidence> SAMLAuthZDecision::evidence() const {
  return child<SAMLEvidence>(kEvidenceElementName);
}

}  // namespace kestrelink
