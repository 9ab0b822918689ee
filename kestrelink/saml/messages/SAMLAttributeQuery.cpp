#include "kestrelink/saml/messages/SAMLAttributeQuery.h"

#include <utility>

#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/saml/messages/RootElement.h"
#include "kestrelink/saml/messages/SubjectFromResponse.h"

namespace kestrelink {

SAMLAttributeQuery::SAMLAttributeQuery(Making making) : XMLWrapperDoc(making) {}
SAMLAttributeQuery::~SAMLAttributeQuery() = default;

std::shared_ptr<SAMLAttributeQuery> SAMLAttributeQuery::initWithData(SharedBytes data,
                                                                     SharedBytes schema,
                                                                     ErrorOut error) {
  registerSAMLElementClasses();
  auto request = std::make_shared<SAMLAttributeQuery>(Making());
  if (!request->startWithData(std::move(data), schema, error)) return nullptr;
  request->requestElement_ = rootElement<SAMLAttributeQueryElement>(*request, error);
  const bool isOther = request->requestElement_ == nullptr;
  if (isOther && error != nullptr) return nullptr;  // only when the caller receives the reason
  if (!isOther) request->schemaData_ = std::move(schema);
  return request;
}

std::shared_ptr<SAMLAttributeQuery> SAMLAttributeQuery::initWithElement(
    std::shared_ptr<SAMLAttributeQueryElement> element, SharedBytes schema, ErrorOut /*error*/) {
  auto request = std::make_shared<SAMLAttributeQuery>(Making());
  request->requestElement_ = element;
  request->startWithElement(std::move(element), std::move(schema));
  return request;
}

const std::shared_ptr<SAMLAttributeQueryElement>& SAMLAttributeQuery::requestElement() const {
  return requestElement_;
}
void SAMLAttributeQuery::setRequestElement(std::shared_ptr<SAMLAttributeQueryElement> element) {
  requestElement_ = std::move(element);
}

std::optional<std::string> SAMLAttributeQuery::channelId() const {
  return requestElement_ ? requestElement_->channelId() : std::nullopt;
}
void SAMLAttributeQuery::setSubjectFromResponse(std::string_view response) {
  if (requestElement_) requestElement_->setSubject(subjectFromResponse(response, schemaData_));
}
void SAMLAttributeQuery::addAttribute(std::string_view name) { addAttribute(name, {}); }
void SAMLAttributeQuery::addAttribute(std::string_view name,
                                      const std::vector<std::string>& values) {
  if (!requestElement_) return;
  const auto attribute = SAMLAttribute::createElement();
  attribute->setName(name);
  for (const std::string& value : values) attribute->addAttributeValue(value);
  requestElement_->addAttribute(attribute);
}

}  // namespace kestrelink
