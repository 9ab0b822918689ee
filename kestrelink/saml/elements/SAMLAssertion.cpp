#include "kestrelink/saml/elements/SAMLAssertion.h"

#include <algorithm>

#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/saml/elements/SAMLEvidence.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/xml/StoreError.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLAssertion::elementClass{
    "SAMLAssertion", &makeElementInstance<SAMLAssertion>};

std::shared_ptr<SAMLAssertion> SAMLAssertion::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLAssertion>(kAssertionElementName, assertionNamespaceOnly(),
                                    kAssertionSequence);
}

std::optional<std::string> SAMLAssertion::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<SAMLDate> SAMLAssertion::issueInstant() const {
  return attributeDate(kIssueInstantAttributeName);
}
std::optional<std::string> SAMLAssertion::issuer() const { return childText(kIssuerElementName); }
std::shared_ptr<SAMLSignature> SAMLAssertion::signature() const {
  return child<SAMLSignature>(kSignatureElementName);
}
std::shared_ptr<SAMLSubject> SAMLAssertion::subject() const {
  return child<SAMLSubject>(kSubjectElementName);
}
std::shared_ptr<SAMLConditions> SAMLAssertion::conditions() const {
  return child<SAMLConditions>(kConditionsElementName);
}
std::shared_ptr<SAMLAdvice> SAMLAssertion::advice() const {
  return child<SAMLAdvice>(kAdviceElementName);
}
std::shared_ptr<SAMLAuthNStatement> SAMLAssertion::authentication() const {
  return child<SAMLAuthNStatement>(kAuthNStatementElementName);
}
std::vector<std::shared_ptr<SAMLAuthZDecision>> SAMLAssertion::authorizations() const {
  return children<SAMLAuthZDecision>(kAuthZDecisionStatementElementName);
}

std::vector<std::shared_ptr<SAMLAttribute>> SAMLAssertion::samlAttributes() const {
  const auto statement = firstElementByTagName(kAttributeStatementElementName);
  return statement ? childrenOf<SAMLAttribute>(*statement, kAttributeElementName)
                   : std::vector<std::shared_ptr<SAMLAttribute>>();
}

bool SAMLAssertion::isValid(ErrorOut error) const {
  if (const auto own = signature(); own && !own->isValid()) {
    storeError(error, SAMLParserErrorDomain, kSAMLParserErrorSignature);
    return false;
  }
  if (const auto statement = authentication(); statement && !statement->isValid()) {
    storeError(error, SAMLParserErrorDomain, kSAMLParserErrorTime);
    return false;
  }
  return true;
}

bool SAMLAssertion::meetsConditions(ErrorOut error) const {
  const auto own = conditions();
  return own && own->assertionMeetsConditions(error);
}

bool SAMLAssertion::isValidForRequestor(std::string_view requestor) const {
  const auto own = conditions();
  if (!own) return false;
  const std::vector<std::string> audiences = own->audienceRestrictions();
  return std::find(audiences.begin(), audiences.end(), requestor) != audiences.end();
}

std::optional<std::string> SAMLAssertion::authorizationForResource(
    std::string_view resource) const {
  for (const auto& statement : authorizations()) {
    if (statement->resource() == resource) return statement->decision();
  }
  return std::nullopt;
}

}  // namespace kestrelink
