#include "kestrelink/saml/elements/SAMLSubject.h"

#include "kestrelink/saml/elements/SAMLDateText.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/xml/libxml/DetachedNode.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLNameId::elementClass{"SAMLNameId",
                                                                &makeElementInstance<SAMLNameId>};
constinit const XMLWrapperElementClass SAMLSubjectConfirmation::elementClass{
    "SAMLSubjectConfirmation", &makeElementInstance<SAMLSubjectConfirmation>};
constinit const XMLWrapperElementClass SAMLSubject::elementClass{"SAMLSubject",
                                                                 &makeElementInstance<SAMLSubject>};

std::shared_ptr<SAMLNameId> SAMLNameId::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLNameId>(kNameIdElementName, assertionNamespaceOnly());
}

std::optional<std::string> SAMLNameId::nameQualifier() const {
  return attributeText(kNameQualifierAttributeName);
}
std::optional<std::string> SAMLNameId::spNameQualifier() const {
  return attributeText(kSPNameQualifierAttributeName);
}
std::optional<std::string> SAMLNameId::format() const {
  return attributeText(kFormatAttributeName);
}
std::optional<std::string> SAMLNameId::spProvidedId() const {
  return attributeText(kSPProvidedIdAttributeName);
}

std::shared_ptr<SAMLSubjectConfirmation> SAMLSubjectConfirmation::createElement(
    ErrorOut /*error*/) {
  return makeElement<SAMLSubjectConfirmation>(kSubjectConfirmationElementName,
                                              assertionNamespaceOnly());
}

std::optional<std::string> SAMLSubjectConfirmation::method() const {
  return attributeText(kMethodAttributeName);
}
std::shared_ptr<SAMLNameId> SAMLSubjectConfirmation::nameId() const {
  return child<SAMLNameId>(kNameIdElementName);
}
std::optional<SAMLDate> SAMLSubjectConfirmation::notBefore() const {
  return SAMLDateFromString(
      childAttributeText(kSubjectConfirmationDataElementName, kNotBeforeAttributeName));
}
std::optional<SAMLDate> SAMLSubjectConfirmation::notOnOrAfter() const {
  return SAMLDateFromString(
      childAttributeText(kSubjectConfirmationDataElementName, kNotOnOrAfterAttributeName));
}
std::optional<std::string> SAMLSubjectConfirmation::recipient() const {
  return childAttributeText(kSubjectConfirmationDataElementName, kRecipientAttributeName);
}
std::optional<std::string> SAMLSubjectConfirmation::inResponseTo() const {
  return childAttributeText(kSubjectConfirmationDataElementName, kInResponseToAttributeName);
}
std::optional<std::string> SAMLSubjectConfirmation::address() const {
  return childAttributeText(kSubjectConfirmationDataElementName, kAddressAttributeName);
}

DetachedNode SAMLSubjectConfirmation::xmlNode(ErrorOut error) {
  List ordered;
  if (auto identifier = firstElementByTagName(kNameIdElementName)) ordered.push_back(identifier);
  const auto data = firstElementByTagName(kSubjectConfirmationDataElementName);
  if (!data) {
    return DetachedNode::refused(
        "A subject confirmation without confirmation data cannot be written");
  }
  ordered.push_back(data);
  setElements(std::move(ordered));
  return SAMLBaseElement::xmlNode(error);
}

std::shared_ptr<SAMLSubject> SAMLSubject::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLSubject>(kSubjectElementName, assertionNamespaceOnly(),
                                  {kNameIdElementName, kSubjectConfirmationElementName});
}

std::shared_ptr<SAMLNameId> SAMLSubject::nameId() const {
  return child<SAMLNameId>(kNameIdElementName);
}
std::vector<std::shared_ptr<SAMLSubjectConfirmation>> SAMLSubject::subjectConfirmations() const {
  return children<SAMLSubjectConfirmation>(kSubjectConfirmationElementName);
}

}  // namespace kestrelink
