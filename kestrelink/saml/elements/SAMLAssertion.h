#pragma once

#include "kestrelink/saml/elements/SAMLAttribute.h"
#include "kestrelink/saml/elements/SAMLAuthNStatement.h"
#include "kestrelink/saml/elements/SAMLAuthZDecision.h"
#include "kestrelink/saml/elements/SAMLBaseElement.h"
#include "kestrelink/saml/elements/SAMLConditions.h"
#include "kestrelink/saml/elements/SAMLSignature.h"
#include "kestrelink/saml/elements/SAMLSubject.h"

namespace kestrelink {

class SAMLAdvice;

/// "Assertion" (SAML 2.0 core, section 2.3.3).
class KESTRELINK_TYPE SAMLAssertion : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  /// An empty assertion, without "ID", "Version" and "IssueInstant".
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLAssertion> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::optional<SAMLDate> issueInstant() const;
  virtual std::optional<std::string> issuer() const;
  virtual std::shared_ptr<SAMLSignature> signature() const;
  virtual std::shared_ptr<SAMLSubject> subject() const;
  virtual std::shared_ptr<SAMLConditions> conditions() const;
  virtual std::shared_ptr<SAMLAdvice> advice() const;
  virtual std::shared_ptr<SAMLAuthNStatement> authentication() const;
  /// The children "AuthzDecisiontStatement"; the standard's spelling is not looked up.
  virtual std::vector<std::shared_ptr<SAMLAuthZDecision>> authorizations() const;
  /// The attributes of the first attribute statement; later statements are not read.
  virtual std::vector<std::shared_ptr<SAMLAttribute>> samlAttributes() const;

  /// Whether `isValid` of the signature and of the authentication statement return true, each if
  /// there is one. If not: `kSAMLParserErrorSignature` or `kSAMLParserErrorTime`. No signature is
  /// verified: see `SAMLSignature::isValid`.
  [[nodiscard]] virtual bool isValid(ErrorOut error = nullptr) const;

  /// Whether the time window of the conditions includes the current time; if not,
  /// `kSAMLParserErrorTime`. False without an error when there are no conditions.
  [[nodiscard]] virtual bool meetsConditions(ErrorOut error = nullptr) const;

  /// Whether the first audience restriction has exactly the requestor as an audience.
  [[nodiscard]] virtual bool isValidForRequestor(std::string_view requestor) const;

  /// The decision of the first statement with exactly that resource; `std::nullopt` when there is
  /// none.
  virtual std::optional<std::string> authorizationForResource(std::string_view resource) const;
};

}  // namespace kestrelink
