#include "kestrelink/saml/messages/SAMLResponse.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "kestrelink/saml/elements/PlainElements.h"
#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/saml/messages/RootElement.h"
#include "kestrelink/xml/StoreError.h"

namespace kestrelink {

SAMLResponse::SAMLResponse(Making making) : XMLWrapperDoc(making) {}
SAMLResponse::~SAMLResponse() = default;

std::shared_ptr<SAMLResponse> SAMLResponse::initWithData(SharedBytes data, SharedBytes schema,
                                                         ErrorOut error) {
  registerSAMLElementClasses();
  auto response = std::make_shared<SAMLResponse>(Making());
  if (!response->startWithData(std::move(data), std::move(schema), error)) return nullptr;
  response->responseElement_ = rootElement<SAMLResponseElement>(*response, error);
  return response;
}

const std::shared_ptr<SAMLResponseElement>& SAMLResponse::responseElement() const {
  return responseElement_;
}
void SAMLResponse::setResponseElement(std::shared_ptr<SAMLResponseElement> element) {
  responseElement_ = std::move(element);
}

std::optional<SAMLResponseElement::Assertions> SAMLResponse::assertions() const {
  return responseElement_ ? responseElement_->assertions() : std::nullopt;
}

SAMLResponseElement::Assertions SAMLResponse::assertionsOrNone() const {
  return assertions().value_or(SAMLResponseElement::Assertions());
}

// Attributes

SAMLResponse::AttributeValues SAMLResponse::attributes() const {
  AttributeValues values;
  const auto all = assertionsOrNone();
  if (all.empty()) return values;
  for (const auto& attribute : all.front()->samlAttributes()) {
    if (auto name = attribute->name()) {
      values.insert_or_assign(std::move(*name), attribute->values());
    }
  }
  return values;
}

std::optional<std::vector<std::string>> SAMLResponse::attributeValuesForName(
    std::string_view name) const {
  const auto all = assertionsOrNone();
  if (all.empty()) return std::nullopt;
  const auto ofFirst = all.front()->samlAttributes();
  const auto last = std::find_if(ofFirst.rbegin(), ofFirst.rend(), [name](const auto& attribute) {
    return attribute->name() == name;
  });
  return last == ofFirst.rend() ? std::nullopt : std::optional((*last)->values());
}

std::optional<std::string> SAMLResponse::userName() const {
  const auto values = attributeValuesForName("username");
  if (!values || values->empty()) return std::nullopt;
  return values->front();
}

// Provider, subject, authentication

std::optional<std::string> SAMLResponse::selectedProvider() const {
  const auto& root = documentElement();
  return root ? textOf(root->firstElementByTagName(kIssuerElementName)) : std::nullopt;
}

std::shared_ptr<SAMLSubject> SAMLResponse::subject() const {
  for (const auto& assertion : assertionsOrNone()) {
    if (auto subject = assertion->subject()) return subject;
  }
  return nullptr;
}

bool SAMLResponse::hasValidAuthentication() const {
  for (const auto& assertion : assertionsOrNone()) {
    if (!assertion->isValid()) continue;
    const auto statement = assertion->authentication();
    if (statement && statement->isValid()) return true;
  }
  return false;
}

std::optional<SAMLDate> SAMLResponse::authenticationTTL() const {
  const auto statement = responseElement_ ? responseElement_->authnStatement() : nullptr;
  return statement ? statement->sessionNotOnOrAfter() : std::nullopt;
}

std::optional<std::string> SAMLResponse::authenticationSessionId() const {
  const auto statement = responseElement_ ? responseElement_->authnStatement() : nullptr;
  return statement ? statement->sessionIndex() : std::nullopt;
}

// Acceptance

bool SAMLResponse::assertionMeetsConditions(ErrorOut error) const {
  return responseElement_ && responseElement_->assertionMeetsConditions(error);
}

bool SAMLResponse::isValid(ErrorOut error) const {
  if (!responseElement_) return true;
  if (const auto signature = responseElement_->signature(); signature && !signature->isValid()) {
    storeError(error, SAMLParserErrorDomain, kSAMLParserErrorSignature);
    return false;
  }
  const SAMLResponseElement& element = *responseElement_;
  if (typeid(element) == typeid(SAMLLogoutResponseElement)) return true;

  const auto all = assertionsOrNone();
  std::optional<ErrorInfo> lastError;
  bool anyValid = false;
  for (const auto& assertion : all) {
    if (assertion->isValid(&lastError)) anyValid = true;
  }
  if (all.empty() || anyValid) return true;
  if (!lastError) storeError(&lastError, SAMLParserErrorDomain, kSAMLParserErrorNoValidAssertion);
  if (error != nullptr) *error = std::move(lastError);
  return false;
}

// Status

std::vector<std::string> SAMLResponse::statusCodes() const {
  std::vector<std::string> codes;
  const auto status = responseElement_ ? responseElement_->status() : nullptr;
  auto code = status ? status->statusCode() : nullptr;
  // A code without a value ends the list: a nested code must not count as the outer one.
  for (; code; code = code->statusCode()) {
    auto value = code->value();
    if (!value) break;
    codes.push_back(std::move(*value));
  }
  return codes;
}

std::optional<std::string> SAMLResponse::primaryStatusCode() const {
  std::vector<std::string> codes = statusCodes();
  if (codes.empty()) return std::nullopt;
  return std::move(codes.front());
}

SAMLExpectedAction SAMLResponse::expectedAction() const {
  const std::vector<std::string> codes = statusCodes();
  if (codes.empty()) return SAMLExpectedActionNone;
  if (codes[0] == kSAMLStatusCodeSuccess) return SAMLExpectedActionProceed;
  const bool refinedByResponder = codes[0] == kSAMLStatusCodeResponderError && codes.size() > 1;
  const bool wantsUI = refinedByResponder && (codes[1] == kSAMLStatusCodeNoPassive ||
                                              codes[1] == kSAMLStatusCodeMSORequestsUI);
  return wantsUI ? SAMLExpectedActionPresentUI : SAMLExpectedActionNone;
}

std::optional<std::string> SAMLResponse::authorizationStatusForResource(
    std::string_view resource) const {
  for (const auto& assertion : assertionsOrNone()) {
    if (auto decision = assertion->authorizationForResource(resource)) return decision;
  }
  return std::nullopt;
}

}  // namespace kestrelink
