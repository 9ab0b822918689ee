#include "kestrelink/saml/messages/SAMLLogoutRequest.h"

#include <utility>

#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/saml/messages/RootElement.h"

namespace kestrelink {

SAMLLogoutRequest::SAMLLogoutRequest(Making making) : XMLWrapperDoc(making) {}
SAMLLogoutRequest::~SAMLLogoutRequest() = default;

std::shared_ptr<SAMLLogoutRequest> SAMLLogoutRequest::initWithData(SharedBytes data,
                                                                   SharedBytes schema,
                                                                   ErrorOut error) {
  registerSAMLElementClasses();
  auto request = std::make_shared<SAMLLogoutRequest>(Making());
  if (!request->startWithData(std::move(data), std::move(schema), error)) return nullptr;
  request->requestElement_ = rootElement<SAMLLogoutRequestElement>(*request, error);
  return request;
}

std::shared_ptr<SAMLLogoutRequest> SAMLLogoutRequest::initWithElement(
    std::shared_ptr<SAMLLogoutRequestElement> element, SharedBytes schema, ErrorOut /*error*/) {
  auto request = std::make_shared<SAMLLogoutRequest>(Making());
  request->requestElement_ = element;
  request->startWithElement(std::move(element), std::move(schema));
  return request;
}

const std::shared_ptr<SAMLLogoutRequestElement>& SAMLLogoutRequest::requestElement() const {
  return requestElement_;
}
void SAMLLogoutRequest::setRequestElement(std::shared_ptr<SAMLLogoutRequestElement> element) {
  requestElement_ = std::move(element);
}

std::optional<std::string> SAMLLogoutRequest::issuer() const {
  return requestElement_ ? requestElement_->issuer() : std::nullopt;
}
void SAMLLogoutRequest::setIssuer(std::string_view issuer) {
  if (requestElement_) requestElement_->setIssuer(issuer);
}
std::optional<std::string> SAMLLogoutRequest::reason() const {
  return requestElement_ ? requestElement_->reason() : std::nullopt;
}
void SAMLLogoutRequest::setReason(std::string_view reason) {
  if (requestElement_) requestElement_->setReason(reason);
}
std::optional<SAMLDate> SAMLLogoutRequest::notOnOrAfter() const {
  return requestElement_ ? requestElement_->notOnOrAfter() : std::nullopt;
}
void SAMLLogoutRequest::setNotOnOrAfter(std::optional<SAMLDate> date) {
  if (requestElement_) requestElement_->setNotOnOrAfter(date);
}

}  // namespace kestrelink
