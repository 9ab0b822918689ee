#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// "Conditions" of an assertion (SAML 2.0 core, section 2.5.1).
class KESTRELINK_TYPE SAMLConditions : public SAMLBaseElement {
 public:
  static const XMLWrapperElementClass elementClass;
  static std::shared_ptr<SAMLConditions> createElement(ErrorOut error = nullptr);

  virtual std::optional<SAMLDate> notBefore() const;
  virtual std::optional<SAMLDate> notOnOrAfter() const;
  /// The audiences of the first "AudienceRestriction"; later restrictions are not read.
  virtual std::vector<std::string> audienceRestrictions() const;
  virtual bool oneTimeUse() const;
  /// Looked up under "saml:ProxyRestriction", prefix included: absent in a parsed message. The list
  /// of audiences is absent always.
  virtual std::optional<double> proxyRestrictionAudienceCount() const;
  virtual std::optional<List> proxyRestrictions() const;
  /// Absent always: nothing fills this list.
  virtual const std::optional<List>& conditions() const;

  /// Whether now lies in the time window: at or after `notBefore` and before `notOnOrAfter`, each
  /// if it is present and parses; no allowance for clocks that differ. If not: code 401 of
  /// `SAMLParserErrorDomain`. Audiences, one-time use and proxies play no part.
  virtual bool assertionMeetsConditions(ErrorOut error = nullptr) const;

 private:
  std::optional<List> conditions_;
};

}  // namespace kestrelink
