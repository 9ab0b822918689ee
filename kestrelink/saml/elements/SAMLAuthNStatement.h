#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// "AuthnStatement" (SAML 2.0 core, section 2.7.2).
class KESTRELINK_TYPE SAMLAuthNStatement : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLAuthNStatement> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<SAMLDate> authnInstant() const;
  virtual std::optional<std::string> sessionIndex() const;
  virtual std::optional<SAMLDate> sessionNotOnOrAfter() const;
  virtual std::optional<std::string> subjectAddress() const;
  virtual std::optional<std::string> subjectDNSName() const;

  /// These four read attributes of "AuthnContext". In the standard they are its child elements, so
  /// the result is `std::nullopt` for a standard message; use
  /// `firstElementByTagName("AuthnContext")`.
  virtual std::optional<std::string> authnContextDecl() const;
  virtual std::optional<std::string> authnContextDeclRef() const;
  virtual std::optional<std::string> authnContextClassRef() const;
  virtual std::optional<std::string> authenticatingAuthority() const;

  /// Whether the authentication has not expired: "SessionNotOnOrAfter" is present, parses, and is
  /// later than the current time.
  [[nodiscard]] virtual bool isValid() const;
};

}  // namespace kestrelink
