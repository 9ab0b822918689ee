#include "kestrelink/saml/elements/SAMLResponseElement.h"

#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLResponseElement::elementClass{
    "SAMLResponseElement", &makeElementInstance<SAMLResponseElement>};
constinit const XMLWrapperElementClass SAMLLogoutResponseElement::elementClass{
    "SAMLLogoutResponseElement", &makeElementInstance<SAMLLogoutResponseElement>};

std::shared_ptr<SAMLResponseElement> SAMLResponseElement::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLResponseElement>(kResponseElementName, protocolNamespaceOnly());
}

std::optional<std::string> SAMLResponseElement::identifier() const {
  return attributeText(kIdentifierAttributeName);
}
std::optional<std::string> SAMLResponseElement::relatedRequest() const {
  return attributeText(kInResponseToAttributeName);
}
std::optional<SAMLDate> SAMLResponseElement::issueInstant() const {
  return attributeDate(kIssueInstantAttributeName);
}
std::optional<std::string> SAMLResponseElement::destination() const {
  return attributeText(kDecisionAttributeName);
}
std::optional<std::string> SAMLResponseElement::consent() const {
  return attributeText(kConsentAttributeName);
}
std::optional<std::string> SAMLResponseElement::issuer() const {
  return childText(kIssuerElementName);
}
std::shared_ptr<SAMLSignature> SAMLResponseElement::signature() const {
  return child<SAMLSignature>(kSignatureElementName);
}
std::shared_ptr<SAMLStatus> SAMLResponseElement::status() const {
  return child<SAMLStatus>(kStatusElementName);
}
std::optional<SAMLResponseElement::Assertions> SAMLResponseElement::assertions() const {
  return children<SAMLAssertion>(kAssertionElementName);
}

bool SAMLResponseElement::assertionMeetsConditions(ErrorOut error) const {
  const Assertions all = assertions().value_or(Assertions());
  if (all.empty()) return true;
  std::optional<ErrorInfo> lastError;
  bool met = false;
  for (const auto& assertion : all) {
    met = assertion->meetsConditions(&lastError);
    if (met) break;
  }
  if (error != nullptr) *error = std::move(lastError);
  return met;
}

std::shared_ptr<SAMLAuthNStatement> SAMLResponseElement::authnStatement() const {
  for (const auto& assertion : assertions().value_or(Assertions())) {
    if (auto statement = assertion->authentication()) return statement;
  }
  return nullptr;
}

std::optional<SAMLResponseElement::Assertions> SAMLLogoutResponseElement::assertions() const {
  return std::nullopt;
}

bool SAMLLogoutResponseElement::assertionMeetsConditions(ErrorOut /*error*/) const { return true; }

}  // namespace kestrelink
