#include "kestrelink/saml/elements/SAMLConditions.h"

#include "kestrelink/platform/Clock.h"
#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/xml/StoreError.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLConditions::elementClass{
    "SAMLConditions", &makeElementInstance<SAMLConditions>};

std::shared_ptr<SAMLConditions> SAMLConditions::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLConditions>(
      kConditionsElementName, assertionNamespaceOnly(),
      {kConditionElementName, kAudienceRestrictionElementName, kOneTimeUseElementName});
}

std::optional<SAMLDate> SAMLConditions::notBefore() const {
  return attributeDate(kNotBeforeAttributeName);
}
std::optional<SAMLDate> SAMLConditions::notOnOrAfter() const {
  return attributeDate(kNotOnOrAfterAttributeName);
}
std::vector<std::string> SAMLConditions::audienceRestrictions() const {
  const auto restriction = firstElementByTagName(kAudienceRestrictionElementName);
  if (!restriction) return {};
  return textsOf(restriction->getElementsByTagName(kAudienceElementName));
}
bool SAMLConditions::oneTimeUse() const {
  return firstElementByTagName(kOneTimeUseElementName) != nullptr;
}
std::optional<double> SAMLConditions::proxyRestrictionAudienceCount() const {
  return numberOf(childAttributeText(kProxyRestrictionElementName, kCountAttributeName));
}
std::optional<XMLWrapperElement::List> SAMLConditions::proxyRestrictions() const {
  return std::nullopt;
}
const std::optional<XMLWrapperElement::List>& SAMLConditions::conditions() const {
  return conditions_;
}

bool SAMLConditions::assertionMeetsConditions(ErrorOut error) const {
  const auto now = currentTime();
  const auto from = notBefore();
  const auto until = notOnOrAfter();
  const bool met = (!from || *from <= now) && (!until || *until > now);
  if (!met) storeError(error, SAMLParserErrorDomain, kSAMLParserErrorTime);
  return met;
}

}  // namespace kestrelink
