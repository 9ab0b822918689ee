#pragma once

#include "kestrelink/saml/elements/SAMLAttribute.h"
#include "kestrelink/saml/elements/SAMLBaseElement.h"
#include "kestrelink/saml/elements/SAMLSignature.h"
#include "kestrelink/saml/elements/SAMLSubject.h"

namespace kestrelink {

/// "AttributeQuery" (SAML 2.0 core, section 3.3.2.3): asks a provider for a subscriber's attributes
/// on behalf of a channel, whose identifier is the "Issuer".
class KESTRELINK_TYPE SAMLAttributeQueryElement : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  /// A query with a new identifier ("_" and a UUID) and the current time as "IssueInstant".
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLAttributeQueryElement> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> identifier() const;  // "ID"
  virtual std::optional<SAMLDate> issueInstant() const;
  /// The attribute "Decision", not "Destination", as in a response.
  virtual std::optional<std::string> destination() const;
  virtual std::optional<std::string> consent() const;
  virtual std::optional<std::string> channelId() const;
  virtual void setChannelId(std::string_view channelId);
  virtual std::shared_ptr<SAMLSignature> signature() const;
  virtual std::shared_ptr<SAMLSubject> subject() const;
  /// Replaces the subject. Null is ignored.
  virtual void setSubject(const std::shared_ptr<SAMLSubject>& subject);
  virtual std::vector<std::shared_ptr<SAMLAttribute>> samlAttributes() const;
  virtual void addAttribute(const std::shared_ptr<SAMLAttribute>& attribute);
};

}  // namespace kestrelink
