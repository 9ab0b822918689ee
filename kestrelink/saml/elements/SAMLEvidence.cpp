#include "kestrelink/saml/elements/SAMLEvidence.h"

#include "kestrelink/saml/elements/SAMLAssertion.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLEvidence::elementClass{
    "SAMLEvidence", &makeElementInstance<SAMLEvidence>};
constinit const XMLWrapperElementClass SAMLAdvice::elementClass{"SAMLAdvice",
                                                                &makeElementInstance<SAMLAdvice>};

std::shared_ptr<SAMLEvidence> SAMLEvidence::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLEvidence>(kEvidenceElementName, assertionNamespaceOnly());
}

std::optional<std::string> SAMLEvidence::assertionIdRef() const {
  return childText(kAssertionIdRefElementName);
}
std::optional<std::string> SAMLEvidence::assertionURIRef() const {
  return childText(kAssertionURIRefElementName);
}
std::shared_ptr<SAMLAssertion> SAMLEvidence::assertion() const {
  return child<SAMLAssertion>(kAssertionElementName);
}

std::shared_ptr<SAMLAdvice> SAMLAdvice::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLAdvice>(kAdviceElementName, assertionNamespaceOnly());
}

std::shared_ptr<SAMLAssertion> SAMLAdvice::assertion() const {
  return child<SAMLAssertion>(kAssertionElementName);
}
void SAMLAdvice::setAssertion(const std::shared_ptr<SAMLAssertion>& assertion) {
  addChildElement(assertion);
}
std::optional<std::string> SAMLAdvice::assertionIDRef() const {
  return childText(kAssertionIdRefElementName);
}
std::optional<std::string> SAMLAdvice::assertionURIRef() const {
  return childText(kAssertionURIRefElementName);
}

// The text is ignored: clients set it on the child and would otherwise write it twice.
void SAMLAdvice::setAssertionIDRef(std::string_view /*text*/) {
  addChildElement(XMLWrapperElement::initWithTagName(kAssertionIdRefElementName));
}
void SAMLAdvice::setAssertionURIRef(std::string_view /*text*/) {
  addChildElement(XMLWrapperElement::initWithTagName(kAssertionURIRefElementName));
}

}  // namespace kestrelink
