#pragma once

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// The name identifier element, spelt "NameId" in everything this library looks up and writes; an
/// element spelt the standard's way, "NameID", is a plain element to it. The identifier itself is
/// the element's `textContent`.
class KESTRELINK_TYPE SAMLNameId : public SAMLBaseElement {
 public:
  static const XMLWrapperElementClass elementClass;
  static std::shared_ptr<SAMLNameId> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> nameQualifier() const;
  virtual std::optional<std::string> spNameQualifier() const;
  virtual std::optional<std::string> format() const;
  virtual std::optional<std::string> spProvidedId() const;
};

/// "SubjectConfirmation" (SAML 2.0 core, section 2.4.1.1), with the attributes of its first
/// "SubjectConfirmationData". The library exposes them and checks none.
class KESTRELINK_TYPE SAMLSubjectConfirmation : public SAMLBaseElement {
 public:
  static const XMLWrapperElementClass elementClass;
  static std::shared_ptr<SAMLSubjectConfirmation> createElement(ErrorOut error = nullptr);

  virtual std::optional<std::string> method() const;
  virtual std::shared_ptr<SAMLNameId> nameId() const;
  virtual std::optional<SAMLDate> notBefore() const;
  virtual std::optional<SAMLDate> notOnOrAfter() const;
  virtual std::optional<std::string> recipient() const;
  virtual std::optional<std::string> inResponseTo() const;
  virtual std::optional<std::string> address() const;

  /// Writes the first "NameId", if any, and the first "SubjectConfirmationData"; other children
  /// are dropped for good. Without confirmation data nothing is dropped and nothing written:
  /// absent, with a line in the log.
  DetachedNode xmlNode(ErrorOut error = nullptr) override;
};

/// "Subject" (SAML 2.0 core, section 2.4.1).
class KESTRELINK_TYPE SAMLSubject : public SAMLBaseElement {
 public:
  static const XMLWrapperElementClass elementClass;
  static std::shared_ptr<SAMLSubject> createElement(ErrorOut error = nullptr);

  /// The first "NameId". For the standard's spelling ask `firstElementByTagName("NameID")`.
  virtual std::shared_ptr<SAMLNameId> nameId() const;
  virtual std::vector<std::shared_ptr<SAMLSubjectConfirmation>> subjectConfirmations() const;
};

}  // namespace kestrelink
