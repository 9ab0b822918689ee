#include "kestrelink/saml/elements/SAMLAuthNStatement.h"

#include "kestrelink/platform/Clock.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLAuthNStatement::elementClass{
    "SAMLAuthNStatement", &makeElementInstance<SAMLAuthNStatement>};

std::shared_ptr<SAMLAuthNStatement> SAMLAuthNStatement::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLAuthNStatement>(kAuthNStatementElementName, assertionNamespaceOnly(),
                                         kAssertionSequence);
}

std::optional<SAMLDate> SAMLAuthNStatement::authnInstant() const {
  return attributeDate(kAuthNInstantAttributeName);
}
std::optional<std::string> SAMLAuthNStatement::sessionIndex() const {
  return attributeText(kSessionIndexAttributeName);
}
std::optional<SAMLDate> SAMLAuthNStatement::sessionNotOnOrAfter() const {
  return attributeDate(kSessiontNotOnOrAfterAttributeName);
}
std::optional<std::string> SAMLAuthNStatement::subjectAddress() const {
  return childAttributeText(kSubjectLocalityElementName, kAddressAttributeName);
}
std::optional<std::string> SAMLAuthNStatement::subjectDNSName() const {
  return childAttributeText(kSubjectLocalityElementName, kDNSNameAttributeName);
}
std::optional<std::string> SAMLAuthNStatement::authnContextDecl() const {
  return childAttributeText(kAuthNContextElementName, kAuthNContextDeclElementName);
}
std::optional<std::string> SAMLAuthNStatement::authnContextDeclRef() const {
  return childAttributeText(kAuthNContextElementName, kAuthNContextDeclRefElementName);
}
std::optional<std::string> SAMLAuthNStatement::authnContextClassRef() const {
  return childAttributeText(kAuthNContextElementName, kAuthNContextClassRefElementName);
}
std::optional<std::string> SAMLAuthNStatement::authenticatingAuthority() const {
  return childAttributeText(kAuthNContextElementName, kAuthenticaticatingAuthorityElementName);
}

bool SAMLAuthNStatement::isValid() const {
  const auto now = currentTime();
  const auto until = sessionNotOnOrAfter();
  return until && *until > now;
}

}  // namespace kestrelink
