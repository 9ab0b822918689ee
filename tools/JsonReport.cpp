#include "JsonReport.h"

#include <nlohmann/json.hpp>

#include "kestrelink/standard/StandardReading.h"

#include "TimeText.h"

namespace ksaml {
namespace {

using Json = nlohmann::ordered_json;
using kestrelink::standard::attributeText;

Json json(const std::optional<std::string>& text) { return text ? Json(*text) : Json(); }

Json json(const std::optional<kestrelink::SAMLDate>& date) {
  return date ? Json(dateText(*date)) : Json();
}

Json json(const std::optional<kestrelink::ErrorInfo>& error) {
  if (!error) return {};
  Json info = Json::object();
  for (const auto& [key, value] : error->info) info[key] = value;
  return {{"domain", error->domain}, {"code", error->code}, {"info", info}};
}

Json nameIdentifier(const kestrelink::SAMLSubject& subject) {
  const auto identifier = kestrelink::standard::nameIdOf(subject);
  if (!identifier) return {};
  return {{"value", json(identifier->textContent())},
          {"element", json(identifier->tagName())},
          {"format", json(attributeText(*identifier, "Format"))},
          {"nameQualifier", json(attributeText(*identifier, "NameQualifier"))},
          {"spNameQualifier", json(attributeText(*identifier, "SPNameQualifier"))},
          {"spProvidedId", json(attributeText(*identifier, "SPProvidedID"))}};
}

Json json(const std::shared_ptr<kestrelink::SAMLSubject>& subject) {
  if (!subject) return {};
  Json confirmations = Json::array();
  for (const auto& confirmation : subject->subjectConfirmations()) {
    confirmations.push_back({{"method", json(confirmation->method())},
                             {"notBefore", json(confirmation->notBefore())},
                             {"notOnOrAfter", json(confirmation->notOnOrAfter())},
                             {"recipient", json(confirmation->recipient())},
                             {"inResponseTo", json(confirmation->inResponseTo())},
                             {"address", json(confirmation->address())}});
  }
  return {{"nameIdentifier", nameIdentifier(*subject)}, {"confirmations", confirmations}};
}

Json authorization(const kestrelink::SAMLResponse& response, const ReadOptions& options) {
  if (options.resources.empty()) return {};
  Json decisions = Json::object();
  for (const std::string& resource : options.resources) {
    decisions[resource] = json(response.authorizationStatusForResource(resource));
  }
  return decisions;
}

Json signedElements(const kestrelink::SAMLResponse& response) {
  Json names = Json::array();
  for (const auto& element : kestrelink::standard::signedElements(response)) {
    names.push_back(json(element->tagName()));
  }
  return names;
}

Json decisions(const kestrelink::SAMLResponse& response) {
  Json all = Json::array();
  for (const auto& assertion : kestrelink::standard::assertionsOf(response)) {
    for (const auto& decision : kestrelink::standard::decisionsOf(*assertion)) {
      all.push_back({{"resource", json(decision.resource)},
                     {"decision", json(decision.decision)},
                     {"actions", decision.actions}});
    }
  }
  return all;
}

Json unreadDates(const kestrelink::SAMLResponse& response) {
  Json all = Json::array();
  for (const auto& date : kestrelink::standard::unreadDates(response)) {
    all.push_back({{"element", date.element},
                   {"attribute", date.attribute},
                   {"text", date.text},
                   {"reason", date.reason}});
  }
  return all;
}

void addAnswers(Json& report, const kestrelink::SAMLResponse& response,
                const ReadOptions& options) {
  const auto assertions = response.assertions();
  report["root"] = json(response.documentElement()->tagName());
  report["meetsConditions"] = response.assertionMeetsConditions();
  report["valid"] = response.isValid();
  report["selectedProvider"] = json(response.selectedProvider());
  report["userName"] = json(response.userName());
  report["subject"] = json(response.subject());
  report["attributes"] = response.attributes();
  report["hasValidAuthentication"] = response.hasValidAuthentication();
  report["authenticationTTL"] = json(response.authenticationTTL());
  report["authenticationSessionId"] = json(response.authenticationSessionId());
  report["assertions"] = assertions ? Json(assertions->size()) : Json();
  report["statusCodes"] = response.statusCodes();
  report["primaryStatusCode"] = json(response.primaryStatusCode());
  report["expectedAction"] = static_cast<std::int64_t>(response.expectedAction());
  report["authorization"] = authorization(response, options);
  report["signed"] = signedElements(response);
  report["audiences"] = audiencesOf(response);
  report["recipient"] = json(kestrelink::standard::recipientOf(response));
  report["inResponseTo"] = json(kestrelink::standard::inResponseTo(response));
  report["destination"] = json(kestrelink::standard::destinationOf(response));
  report["decisions"] = decisions(response);
  report["encryptedAssertions"] = kestrelink::standard::encryptedAssertions(response);
  report["unreadDates"] = unreadDates(response);
}

}  // namespace

std::string jsonReport(const Reading& reading, const ReadOptions& options) {
  Json report = {
      {"file", reading.file}, {"accepted", reading.accepted}, {"error", json(reading.error)}};
  for (const char* key : {"root",
                          "meetsConditions",
                          "valid",
                          "selectedProvider",
                          "userName",
                          "subject",
                          "attributes",
                          "hasValidAuthentication",
                          "authenticationTTL",
                          "authenticationSessionId",
                          "assertions",
                          "statusCodes",
                          "primaryStatusCode",
                          "expectedAction",
                          "authorization",
                          "signed",
                          "audiences",
                          "recipient",
                          "inResponseTo",
                          "destination",
                          "decisions",
                          "encryptedAssertions",
                          "unreadDates"}) {
    report[key] = nullptr;
  }
  if (reading.response) addAnswers(report, *reading.response, options);
  return report.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace ksaml
