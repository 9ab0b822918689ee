#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// "Conditions" of an assertion (SAML 2.0 core, section 2.5.1).
class KESTRELINK_TYPE SAMLConditions : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLConditions> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<SAMLDate> notBefore() const;
  virtual std::optional<SAMLDate> notOnOrAfter() const;
  /// The audiences of the first "AudienceRestriction"; later restrictions are not read.
  virtual std::vector<std::string> audienceRestrictions() const;
  virtual bool oneTimeUse() const;
  /// Looked up with the prefix, as "saml:ProxyRestriction": `std::nullopt` for a parsed message.
  /// `proxyRestrictions` is always `std::nullopt`.
  virtual std::optional<double> proxyRestrictionAudienceCount() const;
  virtual std::optional<List> proxyRestrictions() const;
  /// Always `std::nullopt`.
  virtual const std::optional<List>& conditions() const;

  /// Whether the time window includes the current time: at or after `notBefore` and before
  /// `notOnOrAfter`, each if it is present and parses. Clock skew is not allowed for. If not:
  /// `kSAMLParserErrorTime`. Audiences, one-time use and proxies are not checked.
  [[nodiscard]] virtual bool assertionMeetsConditions(ErrorOut error = nullptr) const;

 private:
  std::optional<List> conditions_;
};

}  // namespace kestrelink
