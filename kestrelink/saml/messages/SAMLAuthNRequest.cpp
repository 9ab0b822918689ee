#include "kestrelink/saml/messages/SAMLAuthNRequest.h"

#include <utility>

#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/saml/messages/RootElement.h"
#include "kestrelink/saml/messages/SubjectFromResponse.h"

namespace kestrelink {

SAMLAuthNRequest::SAMLAuthNRequest(Making making) : XMLWrapperDoc(making) {}
SAMLAuthNRequest::~SAMLAuthNRequest() = default;

std::shared_ptr<SAMLAuthNRequest> SAMLAuthNRequest::initWithData(SharedBytes data,
                                                                 SharedBytes schema,
                                                                 ErrorOut error) {
  registerSAMLElementClasses();
  auto request = std::make_shared<SAMLAuthNRequest>(Making());
  if (!request->startWithData(std::move(data), schema, error)) return nullptr;
  request->requestElement_ = rootElement<SAMLAuthNRequestElement>(*request, error);
  if (request->requestElement_) request->schemaData_ = std::move(schema);
  return request;
}

std::shared_ptr<SAMLAuthNRequest> SAMLAuthNRequest::initWithElement(
    std::shared_ptr<SAMLAuthNRequestElement> element, SharedBytes schema, ErrorOut /*error*/) {
  auto request = std::make_shared<SAMLAuthNRequest>(Making());
  request->requestElement_ = element;
  request->startWithElement(std::move(element), std::move(schema));
  return request;
}

const std::shared_ptr<SAMLAuthNRequestElement>& SAMLAuthNRequest::requestElement() const {
  return requestElement_;
}
void SAMLAuthNRequest::setRequestElement(std::shared_ptr<SAMLAuthNRequestElement> element) {
  requestElement_ = std::move(element);
}

std::optional<std::string> SAMLAuthNRequest::issuer() const {
  return requestElement_ ? requestElement_->issuer() : std::nullopt;
}
void SAMLAuthNRequest::setIssuer(std::string_view issuer) {
  if (requestElement_) requestElement_->setIssuer(issuer);
}
void SAMLAuthNRequest::setIsPassive(bool passive) {
  if (requestElement_) requestElement_->setIsPassive(passive);
}
void SAMLAuthNRequest::setForceAuthN(bool force) {
  if (requestElement_) requestElement_->setForceAuthN(force);
}
void SAMLAuthNRequest::setProviderName(std::string_view name) {
  if (requestElement_) requestElement_->setProviderName(name);
}
void SAMLAuthNRequest::setSubjectFromResponse(std::string_view response) {
  if (requestElement_) requestElement_->setSubject(subjectFromResponse(response, schemaData_));
}

}  // namespace kestrelink
