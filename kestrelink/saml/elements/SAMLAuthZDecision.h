#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

class SAMLEvidence;

/// The authorisation decision statement (SAML 2.0 core, section 2.7.4), named
/// "AuthzDecisiontStatement". Kept as it is spelt: providers send it so.
class KESTRELINK_TYPE SAMLAuthZDecision : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLAuthZDecision> createElement(
      ErrorOut error = nullptr);

  /// "Permit", "Deny" or "Indeterminate", as sent.
  virtual std::optional<std::string> decision() const;
  virtual std::optional<std::string> resource() const;
  virtual List actions() const;
  /// The first child named "Element"; "Evidence" is not looked up.
  virtual std::shared_ptr<SAMLEvidence> evidence() const;
};

}  // namespace kestrelink
