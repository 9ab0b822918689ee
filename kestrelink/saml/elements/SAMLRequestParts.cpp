#include "kestrelink/saml/elements/SAMLRequestParts.h"

#include "kestrelink/platform/Clock.h"
#include "kestrelink/platform/Uuid.h"
#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLDate.h"
#include "kestrelink/saml/elements/SAMLDateText.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"

namespace kestrelink {

void stampRequest(XMLWrapperElement& request, std::string_view identifierPrefix) {
  request.setAttributeWithName(kIdentifierAttributeName,
                               std::string(identifierPrefix) + randomUuid());
  request.setAttributeWithName(kVersionAttributeName, kVersionAttributeValue);
  request.setAttributeWithName(kIssueInstantAttributeName, SAMLStringFromDate(currentTime()));
}

void setIssuerOf(XMLWrapperElement& request, std::string_view issuer) {
  const auto element = textElement(kIssuerElementName, issuer, assertionNamespaceOnly());
  if (const auto current = request.firstElementByTagName(kIssuerElementName)) {
    request.replaceChildElement(current, element);
  } else {
    request.addChildElement(element,
                            request.elements().empty() ? nullptr : request.elements().front());
  }
}

void replaceOrAdd(XMLWrapperElement& request, std::string_view tagName,
                  const std::shared_ptr<XMLWrapperElement>& element) {
  if (const auto current = request.firstElementByTagName(tagName)) {
    request.replaceChildElement(current, element);
  } else {
    request.addChildElement(element);
  }
}

}  // namespace kestrelink
