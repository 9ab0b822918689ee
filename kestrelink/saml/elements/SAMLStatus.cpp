#include "kestrelink/saml/elements/SAMLStatus.h"

#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/elements/SAMLNamespaces.h"

namespace kestrelink {

constinit const XMLWrapperElementClass SAMLStatusCode::elementClass{
    "SAMLStatusCode", &makeElementInstance<SAMLStatusCode>};
constinit const XMLWrapperElementClass SAMLStatus::elementClass{"SAMLStatus",
                                                                &makeElementInstance<SAMLStatus>};

std::shared_ptr<SAMLStatusCode> SAMLStatusCode::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLStatusCode>(kStatusCodeElementName, protocolNamespaceOnly());
}

std::optional<std::string> SAMLStatusCode::value() const {
  return attributeText(kValueAttributeName);
}
std::shared_ptr<SAMLStatusCode> SAMLStatusCode::statusCode() const {
  return child<SAMLStatusCode>(kStatusCodeElementName);
}

std::shared_ptr<SAMLStatus> SAMLStatus::createElement(ErrorOut /*error*/) {
  return makeElement<SAMLStatus>(kStatusElementName, protocolNamespaceOnly());
}

std::shared_ptr<SAMLStatusCode> SAMLStatus::statusCode() const {
  return child<SAMLStatusCode>(kStatusCodeElementName);
}
std::optional<std::string> SAMLStatus::statusMessage() const {
  return childText(kStatusMessageElementName);
}
std::optional<std::string> SAMLStatus::statusDetail() const {
  return childText(kStatusDetailElementName);
}
std::optional<std::string> SAMLStatus::status() const {
  const auto code = statusCode();
  return code ? code->value() : std::nullopt;
}

}  // namespace kestrelink
