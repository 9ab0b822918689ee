#pragma once

#include "kestrelink/saml/elements/SAMLAssertion.h"
#include "kestrelink/saml/elements/SAMLBaseElement.h"
#include "kestrelink/saml/elements/SAMLSignature.h"
#include "kestrelink/saml/elements/SAMLStatus.h"

namespace kestrelink {

/// "Response" (SAML 2.0 core, section 3.3.3): the root element of a provider's response.
class KESTRELINK_TYPE SAMLResponseElement : public SAMLBaseElement {
 public:
  using Assertions = std::vector<std::shared_ptr<SAMLAssertion>>;

  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLResponseElement> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;      // "ID"
  virtual std::optional<std::string> relatedRequest() const;  // "InResponseTo"
  virtual std::optional<SAMLDate> issueInstant() const;
  /// The attribute "Decision", not "Destination": clients rely on `std::nullopt` here.
  virtual std::optional<std::string> destination() const;
  virtual std::optional<std::string> consent() const;
  virtual std::optional<std::string> issuer() const;
  virtual std::shared_ptr<SAMLSignature> signature() const;
  virtual std::shared_ptr<SAMLStatus> status() const;
  /// In document order. `std::nullopt`, not an empty list, for a logout response.
  virtual std::optional<Assertions> assertions() const;

  /// Whether the time window of an assertion includes the current time; true when there are no
  /// assertions. The check stops at the first such assertion. Whatever the result, `error` is then
  /// the last error that a checked assertion reported, or `std::nullopt`. Without assertions it is
  /// not changed.
  [[nodiscard]] virtual bool assertionMeetsConditions(ErrorOut error = nullptr) const;

  /// The authentication statement of the first assertion that has one, or null.
  virtual std::shared_ptr<SAMLAuthNStatement> authnStatement() const;
};

/// "LogoutResponse" (SAML 2.0 core, section 3.7.2). It has no assertions.
class KESTRELINK_TYPE SAMLLogoutResponseElement : public SAMLResponseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;

  std::optional<Assertions> assertions() const override;
  [[nodiscard]] bool assertionMeetsConditions(ErrorOut error = nullptr) const override;
};

}  // namespace kestrelink
