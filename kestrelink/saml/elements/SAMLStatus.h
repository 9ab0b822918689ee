#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// "StatusCode" (SAML 2.0 core, section 3.2.2.2); a nested code refines it.
class KESTRELINK_TYPE SAMLStatusCode : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLStatusCode> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> value() const;
  virtual std::shared_ptr<SAMLStatusCode> statusCode() const;
};

/// "Status" (SAML 2.0 core, section 3.2.2.1).
class KESTRELINK_TYPE SAMLStatus : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLStatus> createElement(ErrorOut error = nullptr);

  virtual std::shared_ptr<SAMLStatusCode> statusCode() const;
  /// Looked up with the prefix, as "samlp:StatusMessage" and "samlp:StatusDetail": `std::nullopt`
  /// for a parsed message: its tag names have no prefix, unless it is undeclared.
  virtual std::optional<std::string> statusMessage() const;
  virtual std::optional<std::string> statusDetail() const;
  /// The value of the top-level code.
  virtual std::optional<std::string> status() const;
};

}  // namespace kestrelink
