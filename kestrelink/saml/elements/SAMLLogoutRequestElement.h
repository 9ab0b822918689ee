#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"
#include "kestrelink/saml/elements/SAMLSignature.h"
#include "kestrelink/saml/elements/SAMLSubject.h"

namespace kestrelink {

/// "LogoutRequest" (SAML 2.0 core, section 3.7.1): ends the subscriber's session at the provider.
class KESTRELINK_TYPE SAMLLogoutRequestElement : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  /// A request with a new identifier and the current time as "IssueInstant". The identifier is a
  /// UUID without the "_" of the other requests; providers match it as it is.
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLLogoutRequestElement> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::optional<SAMLDate> issueInstant() const;
  virtual std::optional<std::string> destination() const;
  virtual void setDestination(std::string_view destination);
  virtual std::optional<std::string> consent() const;
  virtual std::optional<std::string> reason() const;
  virtual void setReason(std::string_view reason);
  virtual std::optional<SAMLDate> notOnOrAfter() const;
  /// `std::nullopt` is written as an empty date.
  virtual void setNotOnOrAfter(std::optional<SAMLDate> date);
  virtual std::optional<std::string> issuer() const;
  virtual void setIssuer(std::string_view issuer);
  virtual std::shared_ptr<SAMLSignature> signature() const;
  /// The first "NameId". There is no setter: add the element with `addChildElement`.
  virtual std::shared_ptr<SAMLNameId> nameId() const;
  virtual std::optional<std::string> sessionIndex() const;
  /// Replaces the session index. It is written without a namespace.
  virtual void setSessionIndex(std::string_view sessionIndex);
};

}  // namespace kestrelink
