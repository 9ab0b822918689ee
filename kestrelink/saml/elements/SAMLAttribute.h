#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// "Attribute" (SAML 2.0 core, section 2.7.3.1): granted in a response, asked for in a query.
class KESTRELINK_TYPE SAMLAttribute : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLAttribute> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> name() const;
  virtual void setName(std::string_view name);
  virtual std::optional<std::string> nameFormat() const;
  virtual std::optional<std::string> friendlyName() const;
  /// The texts of the children "AttributeValue", in order; a value without text is skipped.
  virtual std::vector<std::string> values() const;
  /// Appends a value as text without a type.
  virtual void addAttributeValue(std::string_view value);
};

}  // namespace kestrelink
