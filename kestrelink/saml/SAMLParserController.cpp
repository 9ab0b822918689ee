#include "kestrelink/saml/SAMLParserController.h"

#include <atomic>
#include <string>
#include <utility>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/NoDestructor.h"
#include "kestrelink/platform/ResourceBundle.h"
#include "kestrelink/platform/Text.h"
#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/xml/StoreError.h"

namespace kestrelink {
namespace {

// Written once in a process: a client may make many controllers.
void logMissingSchema(const std::string& reason) {
  static std::atomic_flag isLogged;
  const std::string line = "Messages are read without validation: " + reason;
  if (!isLogged.test_and_set()) logDiagnostic(line);
}

SharedBytes readProtocolSchema() {
  const ResourceBundle* const bundle = ResourceBundle::ofLibrary();
  if (bundle == nullptr) return nullptr;
  std::string reason;
  auto bytes = bundle->bytes("saml-schema-protocol-2.0", "xsd", &reason);
  if (bytes) return std::make_shared<const std::string>(std::move(*bytes));
  logMissingSchema(reason);
  return nullptr;
}

}  // namespace

SAMLParserController& SAMLParserController::sharedInstance() {
  static auto& controller = noDestructor<SAMLParserController>();
  return controller;
}

SAMLParserController::SAMLParserController() : schemaData_(readProtocolSchema()) {
  registerSAMLElementClasses();
}

SAMLParserController::~SAMLParserController() = default;

std::shared_ptr<SAMLResponse> SAMLParserController::parseResponse(std::string_view response,
                                                                  ErrorOut error) const {
  auto read = readResponse(response, error);
  const bool accepted = read && read->assertionMeetsConditions(error) && read->isValid(error);
  return accepted ? read : nullptr;
}

std::shared_ptr<SAMLResponse> SAMLParserController::parseCachedResponse(std::string_view response,
                                                                        ErrorOut error) const {
  auto read = readResponse(response, error);
  return read && read->isValid(error) ? read : nullptr;
}

std::shared_ptr<SAMLResponse> SAMLParserController::readResponse(std::string_view response,
                                                                 ErrorOut error) const {
  SharedBytes bytes = dataFromString(response, error);
  return bytes ? SAMLResponse::initWithData(std::move(bytes), schemaData_, error) : nullptr;
}

std::shared_ptr<SAMLAuthNRequest> SAMLParserController::newAuthNRequest(std::string_view issuer,
                                                                        ErrorOut error) const {
  auto element = SAMLAuthNRequestElement::createElement(error);
  if (element) element->setIssuer(issuer);
  return SAMLAuthNRequest::initWithElement(std::move(element), schemaData_, error);
}

std::shared_ptr<SAMLAttributeQuery> SAMLParserController::newAttributeQuery(
    std::string_view channelId, ErrorOut error) const {
  auto element = SAMLAttributeQueryElement::createElement(error);
  if (element) element->setChannelId(channelId);
  return SAMLAttributeQuery::initWithElement(std::move(element), schemaData_, error);
}

std::shared_ptr<SAMLAuthZDecisionQuery> SAMLParserController::newAuthZQuery(
    std::string_view resource, std::string_view channelId, ErrorOut error) const {
  auto element = SAMLAuthZDecisionQueryElement::createElement(error);
  if (element) element->setChannelId(channelId);
  auto query = SAMLAuthZDecisionQuery::initWithElement(std::move(element), schemaData_, error);
  query->setResource(resource);
  return query;
}

std::shared_ptr<SAMLLogoutRequest> SAMLParserController::newLogoutRequest(ErrorOut error) const {
  return SAMLLogoutRequest::initWithElement(SAMLLogoutRequestElement::createElement(error),
                                            schemaData_, error);
}

SharedBytes SAMLParserController::dataFromString(std::string_view text, ErrorOut error) const {
  if (!isUtf8(text)) {
    storeError(error, SAMLParserErrorDomain, kSAMLParserErrorNotUtf8);
    return nullptr;
  }
  return std::make_shared<const std::string>(text);
}

const SharedBytes& SAMLParserController::schema() const { return schemaData_; }
const SharedBytes& SAMLParserController::schemaData() const { return schemaData_; }
void SAMLParserController::setSchemaData(SharedBytes schema) { schemaData_ = std::move(schema); }

}  // namespace kestrelink
