#include "kestrelink/saml/messages/SAMLAuthZDecisionQuery.h"

#include <utility>

#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/saml/messages/RootElement.h"
#include "kestrelink/saml/messages/SubjectFromResponse.h"

namespace kestrelink {

SAMLAuthZDecisionQuery::SAMLAuthZDecisionQuery(Making making) : XMLWrapperDoc(making) {}
SAMLAuthZDecisionQuery::~SAMLAuthZDecisionQuery() = default;

std::shared_ptr<SAMLAuthZDecisionQuery> SAMLAuthZDecisionQuery::initWithData(SharedBytes data,
                                                                             SharedBytes schema,
                                                                             ErrorOut error) {
  registerSAMLElementClasses();
  auto request = std::make_shared<SAMLAuthZDecisionQuery>(Making());
  if (!request->startWithData(std::move(data), std::move(schema), error)) return nullptr;
  request->requestElement_ = rootElement<SAMLAuthZDecisionQueryElement>(*request, error);
  return request;
}

std::shared_ptr<SAMLAuthZDecisionQuery> SAMLAuthZDecisionQuery::initWithElement(
    std::shared_ptr<SAMLAuthZDecisionQueryElement> element, SharedBytes schema,
    ErrorOut /*error*/) {
  auto request = std::make_shared<SAMLAuthZDecisionQuery>(Making());
  request->requestElement_ = element;
  request->startWithElement(std::move(element), std::move(schema));
  return request;
}

const std::shared_ptr<SAMLAuthZDecisionQueryElement>& SAMLAuthZDecisionQuery::requestElement()
    const {
  return requestElement_;
}
void SAMLAuthZDecisionQuery::setRequestElement(
    std::shared_ptr<SAMLAuthZDecisionQueryElement> element) {
  requestElement_ = std::move(element);
}

std::optional<std::string> SAMLAuthZDecisionQuery::channelId() const {
  return requestElement_ ? requestElement_->channelId() : std::nullopt;
}
void SAMLAuthZDecisionQuery::setSubjectFromResponse(std::string_view response) {
  if (requestElement_) requestElement_->setSubject(subjectFromResponse(response, schemaData()));
}
void SAMLAuthZDecisionQuery::addAction(std::string_view action) {
  if (requestElement_) requestElement_->addAction(action);
}
void SAMLAuthZDecisionQuery::setResource(std::string_view url) {
  if (!requestElement_) return;
  requestElement_->setResource(url.data() == nullptr ? std::nullopt : std::optional(url));
}

}  // namespace kestrelink
