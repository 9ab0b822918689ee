#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

class SAMLAssertion;

/// Evidence for a decision (SAML 2.0 core, section 2.7.4.3), named "Element".
class KESTRELINK_TYPE SAMLEvidence : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLEvidence> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> assertionIdRef() const;
  virtual std::optional<std::string> assertionURIRef() const;
  virtual std::shared_ptr<SAMLAssertion> assertion() const;
};

/// "Advice" in an assertion (SAML 2.0 core, section 2.6.1).
class KESTRELINK_TYPE SAMLAdvice : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLAdvice> createElement(ErrorOut error = nullptr);

  virtual std::shared_ptr<SAMLAssertion> assertion() const;
  virtual void setAssertion(const std::shared_ptr<SAMLAssertion>& assertion);
  virtual std::optional<std::string> assertionIDRef() const;
  virtual std::optional<std::string> assertionURIRef() const;
  /// Append an empty reference. The text is ignored; set it on the child.
  virtual void setAssertionIDRef(std::string_view text);
  virtual void setAssertionURIRef(std::string_view text);
};

}  // namespace kestrelink
