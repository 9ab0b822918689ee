#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"
#include "kestrelink/saml/elements/SAMLConditions.h"
#include "kestrelink/saml/elements/SAMLSignature.h"
#include "kestrelink/saml/elements/SAMLSubject.h"

namespace kestrelink {

/// The name identifier policy (SAML 2.0 core, section 3.4.1.1), written and looked up as
/// "NameIdPolicy".
class KESTRELINK_TYPE SAMLNameIdPolicy : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  /// A policy with the transient format and "AllowCreate" false.
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLNameIdPolicy> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> format() const;
  virtual std::optional<std::string> allowCreation() const;  // the text of "AllowCreate"
};

/// "RequestedAuthnContext" (SAML 2.0 core, section 3.3.2.2.1).
class KESTRELINK_TYPE SAMLRequestedAuthNContext : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLRequestedAuthNContext> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> comparison() const;
  /// Looked up with the prefix, as "saml:AuthnContextClassRef" and "saml:AuthnContextDeclRef":
  /// `std::nullopt` for a parsed message.
  virtual std::optional<std::string> classRef() const;
  virtual std::optional<std::string> declRef() const;
};

/// "IDPEntry" (SAML 2.0 core, section 3.4.1.3.1).
class KESTRELINK_TYPE SAMLIDPEntry : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLIDPEntry> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> providerId() const;
  virtual std::optional<std::string> name() const;
  virtual std::optional<std::string> loc() const;
};

/// "Scoping" (SAML 2.0 core, section 3.4.1.2).
class KESTRELINK_TYPE SAMLScoping : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLScoping> createElement(ErrorOut error = nullptr);

  /// Appends a "RequesterID", written without a namespace.
  virtual void addRequesterId(std::string_view requesterId);
  virtual std::vector<std::string> requesterIds() const;
  virtual std::optional<double> proxyCount() const;
  virtual std::optional<std::string> getComplete() const;
  virtual std::vector<std::shared_ptr<SAMLIDPEntry>> idpList() const;
};

/// "AuthnRequest" (SAML 2.0 core, section 3.4.1): asks a provider to sign the subscriber in.
class KESTRELINK_TYPE SAMLAuthNRequestElement : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  /// A request with a new identifier ("_" and a UUID), the current time as "IssueInstant", and the
  /// default name identifier policy.
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLAuthNRequestElement> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::optional<SAMLDate> issueInstant() const;
  virtual std::optional<std::string> destination() const;
  virtual void setDestination(std::string_view destination);
  virtual std::optional<std::string> consent() const;
  /// True only for the text "true".
  virtual bool forceAuthN() const;
  virtual void setForceAuthN(bool force);
  virtual bool isPassive() const;
  virtual void setIsPassive(bool passive);
  /// Reads "ProviderName"; the setter writes "ProviderID". Clients and providers rely on both.
  virtual std::optional<std::string> providerName() const;
  virtual void setProviderName(std::string_view name);
  virtual std::optional<std::string> issuer() const;
  /// Replaces the issuer.
  virtual void setIssuer(std::string_view issuer);

  /// The getters return the first child of each name. The setters add a child and remove none:
  /// after `setNameIdPolicy` the default policy is still the first.
  virtual std::shared_ptr<SAMLSignature> signature() const;
  virtual std::shared_ptr<SAMLSubject> subject() const;
  virtual void setSubject(const std::shared_ptr<SAMLSubject>& subject);
  virtual std::shared_ptr<SAMLNameIdPolicy> nameIdPolicy() const;
  virtual void setNameIdPolicy(const std::shared_ptr<SAMLNameIdPolicy>& policy);
  virtual std::shared_ptr<SAMLConditions> conditions() const;
  virtual void setConditions(const std::shared_ptr<SAMLConditions>& conditions);
  virtual std::shared_ptr<SAMLRequestedAuthNContext> context() const;
  virtual std::shared_ptr<SAMLScoping> scoping() const;
  virtual void setScoping(const std::shared_ptr<SAMLScoping>& scoping);
};

}  // namespace kestrelink
