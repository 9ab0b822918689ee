#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"
#include "kestrelink/saml/elements/SAMLEvidence.h"
#include "kestrelink/saml/elements/SAMLSignature.h"
#include "kestrelink/saml/elements/SAMLSubject.h"

namespace kestrelink {

/// "AuthzDecisionQuery" (SAML 2.0 core, section 3.3.2.4): asks a provider whether the subscriber
/// may do something with a resource, on behalf of a channel, whose identifier is the
/// "Issuer".
class KESTRELINK_TYPE SAMLAuthZDecisionQueryElement : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  /// A query with a new identifier ("_" and a UUID) and the current time as "IssueInstant", without
  /// an action.
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLAuthZDecisionQueryElement> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::optional<SAMLDate> issueInstant() const;
  virtual std::optional<std::string> destination() const;
  virtual void setDestination(std::string_view destination);
  virtual std::optional<std::string> consent() const;
  virtual std::optional<std::string> resource() const;
  /// `std::nullopt` is written as an empty resource.
  virtual void setResource(std::optional<std::string_view> resource);
  virtual std::optional<std::string> channelId() const;
  virtual void setChannelId(std::string_view channelId);
  virtual std::shared_ptr<SAMLSignature> signature() const;
  /// The first subject; the setter adds another.
  virtual std::shared_ptr<SAMLSubject> subject() const;
  virtual void setSubject(const std::shared_ptr<SAMLSubject>& subject);
  virtual List actions() const;
  /// Adds an action, before the evidence if there is any. It is written without a namespace.
  virtual void addAction(std::string_view action);
  /// The first child named "Element"; the setter replaces it. Null is ignored.
  virtual std::shared_ptr<SAMLEvidence> evidence() const;
  virtual void setEvidence(const std::shared_ptr<SAMLEvidence>& evidence);
};

}  // namespace kestrelink
