#include "JsonReport.h"

#include <nlohmann/json.hpp>

#include "kestrelink/standard/StandardReading.h"

namespace ksaml {
namespace {

using Json = nlohmann::ordered_json;
namespace standard = kestrelink::standard;
using standard::attributeText;

Json json(const std::optional<std::string>& text) { return text ? Json(*text) : Json(); }

Json json(const std::optional<kestrelink::SAMLDate>& date) {
  return date ? Json(textOf(*date)) : Json();
}

Json json(const std::optional<kestrelink::ErrorInfo>& error) {
  if (!error) return {};
  Json info = Json::object();
  for (const auto& [key, value] : error->info) info[key] = value;
  return {{"domain", error->domain}, {"code", error->code}, {"info", info}};
}

Json nameIdentifier(const kestrelink::SAMLSubject& subject) {
  const auto identifier = standard::nameIdOf(subject);
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
  for (const auto& element : standard::signedElements(response)) {
    names.push_back(json(element->tagName()));
  }
  return names;
}

Json decisions(const kestrelink::SAMLResponse& response) {
  Json all = Json::array();
  for (const auto& assertion : standard::assertionsOf(response)) {
    for (const auto& decision : standard::decisionsOf(*assertion)) {
      all.push_back({{"resource", json(decision.resource)},
                     {"decision", json(decision.decision)},
                     {"actions", decision.actions}});
    }
  }
  return all;
}

Json unreadDates(const kestrelink::SAMLResponse& response) {
  Json all = Json::array();
  for (const auto& date : standard::unreadDates(response)) {
    all.push_back({{"element", date.element},
                   {"attribute", date.attribute},
                   {"text", date.text},
                   {"reason", date.reason}});
  }
  return all;
}

const char* nameOf(kestrelink::signin::Verdict verdict) {
  switch (verdict) {
    case kestrelink::signin::Verdict::signedIn:
      return "signedIn";
    case kestrelink::signin::Verdict::showSignInPage:
      return "showSignInPage";
    case kestrelink::signin::Verdict::denied:
      return "denied";
    case kestrelink::signin::Verdict::loggedOut:
      return "loggedOut";
    case kestrelink::signin::Verdict::answered:
      return "answered";
    case kestrelink::signin::Verdict::refused:
      break;
  }
  return "refused";
}

Json verification(const Reading& reading) {
  if (!reading.result) return {};
  return {{"verdict", nameOf(reading.result->verdict)},
          {"explanation", reading.result->explanation}};
}

using Response = const kestrelink::SAMLResponse&;
using Options = const ReadOptions&;

Json assertions(Response response) {
  const auto all = response.assertions();
  return all ? Json(all->size()) : Json();
}

// The keys of a message that was read, in the order in which they are written.
struct Entry {
  const char* key;
  Json (*value)(Response, Options);
};
constexpr Entry kEntries[] = {
    {"root", [](Response r, Options) { return json(r.documentElement()->tagName()); }},
    {"meetsConditions", [](Response r, Options) { return Json(r.assertionMeetsConditions()); }},
    {"valid", [](Response r, Options) { return Json(r.isValid()); }},
    {"selectedProvider", [](Response r, Options) { return json(r.selectedProvider()); }},
    {"userName", [](Response r, Options) { return json(r.userName()); }},
    {"subject", [](Response r, Options) { return json(r.subject()); }},
    {"attributes", [](Response r, Options) { return Json(r.attributes()); }},
    {"hasValidAuthentication",
     [](Response r, Options) { return Json(r.hasValidAuthentication()); }},
    {"authenticationTTL", [](Response r, Options) { return json(r.authenticationTTL()); }},
    {"authenticationSessionId",
     [](Response r, Options) { return json(r.authenticationSessionId()); }},
    {"assertions", [](Response r, Options) { return assertions(r); }},
    {"statusCodes", [](Response r, Options) { return Json(r.statusCodes()); }},
    {"primaryStatusCode", [](Response r, Options) { return json(r.primaryStatusCode()); }},
    {"expectedAction",
     [](Response r, Options) { return Json(static_cast<std::int64_t>(r.expectedAction())); }},
    {"authorization", [](Response r, Options options) { return authorization(r, options); }},
    {"signed", [](Response r, Options) { return signedElements(r); }},
    {"audiences", [](Response r, Options) { return Json(audiencesOf(r)); }},
    {"recipient", [](Response r, Options) { return json(standard::recipientOf(r)); }},
    {"inResponseTo", [](Response r, Options) { return json(standard::inResponseTo(r)); }},
    {"destination", [](Response r, Options) { return json(standard::destinationOf(r)); }},
    {"decisions", [](Response r, Options) { return decisions(r); }},
    {"encryptedAssertions",
     [](Response r, Options) { return Json(standard::encryptedAssertions(r)); }},
    {"unreadDates", [](Response r, Options) { return unreadDates(r); }},
};

}  // namespace

std::string jsonReport(const Reading& reading, const ReadOptions& options) {
  Json report = {{"file", reading.file},
                 {"accepted", reading.accepted},
                 {"error", json(reading.error)},
                 {"verification", verification(reading)}};
  for (const Entry& entry : kEntries) {
    report[entry.key] = reading.response ? entry.value(*reading.response, options) : Json();
  }
  return report.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace ksaml
