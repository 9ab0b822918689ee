#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// "AuthnStatement" (SAML 2.0 core, section 2.7.2).
class KESTRELINK_TYPE SAMLAuthNStatement : public SAMLBaseElement {
 public:
  static const XMLWrapperElementClass elementClass;
  static std::shared_ptr<SAMLAuthNStatement> createElement(ErrorOut error = nullptr);

  virtual std::optional<SAMLDate> authnInstant() const;
  virtual std::optional<std::string> sessionIndex() const;
  virtual std::optional<SAMLDate> sessionNotOnOrAfter() const;
  virtual std::optional<std::string> subjectAddress() const;
  virtual std::optional<std::string> subjectDNSName() const;

  /// These four are attributes of "AuthnContext". The standard makes them its child elements, so
  /// they are absent in a standard message; ask `firstElementByTagName("AuthnContext")` there.
  virtual std::optional<std::string> authnContextDecl() const;
  virtual std::optional<std::string> authnContextDeclRef() const;
  virtual std::optional<std::string> authnContextClassRef() const;
  virtual std::optional<std::string> authenticatingAuthority() const;

  /// Whether "SessionNotOnOrAfter" is present, parses, and is later than now.
  virtual bool isValid() const;
};

}  // namespace kestrelink
