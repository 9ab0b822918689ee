#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// The name identifier, looked up and written as "NameId". The standard's "NameID" is read as a
/// plain element. The identifier itself is the element's `textContent`.
class KESTRELINK_TYPE SAMLNameId : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLNameId> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> nameQualifier() const;
  virtual std::optional<std::string> spNameQualifier() const;
  virtual std::optional<std::string> format() const;
  virtual std::optional<std::string> spProvidedId() const;
};

/// "SubjectConfirmation" (SAML 2.0 core, section 2.4.1.1), with the attributes of its first
/// "SubjectConfirmationData". The library checks none of them.
class KESTRELINK_TYPE SAMLSubjectConfirmation : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLSubjectConfirmation> createElement(
      ErrorOut error = nullptr);

  virtual std::optional<std::string> method() const;
  virtual std::shared_ptr<SAMLNameId> nameId() const;
  virtual std::optional<SAMLDate> notBefore() const;
  virtual std::optional<SAMLDate> notOnOrAfter() const;
  virtual std::optional<std::string> recipient() const;
  virtual std::optional<std::string> inResponseTo() const;
  virtual std::optional<std::string> address() const;

  /// Writes the first "NameId", if any, and the first "SubjectConfirmationData", and removes other
  /// children. Without confirmation data nothing is removed and no node is returned; the log says
  /// so.
  DetachedNode xmlNode(ErrorOut error = nullptr) override;
};

/// "Subject" (SAML 2.0 core, section 2.4.1).
class KESTRELINK_TYPE SAMLSubject : public SAMLBaseElement {
 public:
  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;
  KESTRELINK_INTERNAL static std::shared_ptr<SAMLSubject> createElement(ErrorOut error = nullptr);

  /// The first "NameId". For the standard's "NameID" use `standard::nameIdOf`.
  virtual std::shared_ptr<SAMLNameId> nameId() const;
  virtual std::vector<std::shared_ptr<SAMLSubjectConfirmation>> subjectConfirmations() const;
};

}  // namespace kestrelink
