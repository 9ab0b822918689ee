#include "TextReport.h"

#include <chrono>

#include "kestrelink/standard/StandardReading.h"

#include "Table.h"
#include "TimeText.h"

namespace ksaml {
namespace {

using kestrelink::SAMLAssertion;
using kestrelink::SAMLDate;
using kestrelink::SAMLResponse;
using kestrelink::standard::attributeText;

// Used only to print spans of time; the library makes the checks.
SAMLDate currentTime() { return std::chrono::system_clock::now(); }

std::string ago(const SAMLDate& date) {
  return spanText(currentTime().seconds() - date.seconds()) + " ago";
}
std::string ahead(const SAMLDate& date) {
  return "in " + spanText(date.seconds() - currentTime().seconds());
}
std::string beside(const SAMLDate& date) { return date > currentTime() ? ahead(date) : ago(date); }

/// The date attribute and how far it is from the current time; empty when the element has none.
std::string dateAttribute(const kestrelink::XMLWrapperElement& element, std::string_view name,
                          const std::optional<SAMLDate>& date) {
  if (date) return textOf(*date) + " (" + beside(*date) + ")";
  const auto text = attributeText(element, name);
  if (!text) return {};
  return "\"" + printable(*text) + "\" (not read, because " +
         kestrelink::standard::reasonForUnreadDate(*text) + ")";
}

// Verdict

const char* timeReason(const SAMLResponse& response, const ReadOptions& options) {
  return options.cached || response.assertionMeetsConditions()
             ? "the authentication of every assertion has expired, or has no end"
             : "no assertion's time window includes the current time";
}

std::string reasonOf(const Reading& reading, const ReadOptions& options) {
  const bool isTime = reading.error && reading.error->domain == kestrelink::SAMLParserErrorDomain &&
                      reading.error->code == kestrelink::kSAMLParserErrorTime;
  if (isTime && reading.response) return timeReason(*reading.response, options);
  if (!reading.error && reading.response) return "no assertion has conditions";
  return std::string(kestrelink::describe(reading.error));
}

std::string errorDetails(const kestrelink::ErrorInfo& error) {
  std::string text = "  " + error.domain + " " + std::to_string(error.code) + "\n";
  for (const auto& [key, value] : error.info) {
    std::size_t from = 0;
    while (from < value.size()) {
      const std::size_t end = std::min(value.find('\n', from), value.size());
      if (end > from) text += "  " + printable(value.substr(from, end - from)) + "\n";
      from = end + 1;
    }
  }
  return text;
}

bool isAllEncrypted(const SAMLResponse& response) {
  return kestrelink::standard::encryptedAssertions(response) > 0 &&
         kestrelink::standard::assertionsOf(response).empty();
}

std::string statusText(const SAMLResponse& response) {
  const auto codes = response.statusCodes();
  return codes.empty() ? "it has no status" : printable(codes.back());
}

struct Verdict {
  const char* colour;
  std::string words;
};
constexpr const char* kRed = "\033[1;31m";
constexpr const char* kYellow = "\033[1;33m";
constexpr const char* kGreen = "\033[1;32m";

Verdict verdictOf(const kestrelink::signin::Result& result) {
  const std::string why = printable(result.explanation);
  switch (result.verdict) {
    case kestrelink::signin::Verdict::refused:
      return {kRed, "refused: " + why};
    case kestrelink::signin::Verdict::denied:
      return {kYellow, "denied: " + why};
    case kestrelink::signin::Verdict::showSignInPage:
      return {kYellow, "not signed in: the provider has to show its sign-in page"};
    case kestrelink::signin::Verdict::signedIn:
    case kestrelink::signin::Verdict::loggedOut:
    case kestrelink::signin::Verdict::answered:
      break;
  }
  return {kGreen, why};
}

Verdict verdictOf(const Reading& reading, const ReadOptions& options) {
  if (reading.result) return verdictOf(*reading.result);
  if (!reading.accepted) return {kRed, "rejected: " + reasonOf(reading, options)};
  const SAMLResponse& response = *reading.response;
  if (!response.responseElement()) {
    return {kYellow, "accepted unchecked: its root element is not a response"};
  }
  if (response.expectedAction() == kestrelink::SAMLExpectedActionPresentUI) {
    return {kYellow, "not signed in: the provider has to show its sign-in page"};
  }
  if (response.expectedAction() == kestrelink::SAMLExpectedActionNone) {
    return {kYellow, "denied: " + statusText(response)};
  }
  if (isAllEncrypted(response)) {
    return {kYellow, "accepted, but its assertions are encrypted: nothing was read"};
  }
  return {kGreen, "accepted"};
}

std::string verdict(const Reading& reading, const ReadOptions& options, bool colour) {
  const auto [code, words] = verdictOf(reading, options);
  std::string text = printable(reading.file) + ": ";
  text += colour ? code + words + "\033[0m" : words;
  text += "\n";
  if (reading.error) text += errorDetails(*reading.error);
  if (!reading.validated) text += "  not validated: no schema\n";
  if (reading.result && !reading.result->response && reading.response) {
    text += "  nothing of what follows is verified\n";
  }
  return text;
}

// Contents of the message

std::string shown(const std::optional<std::string>& text) {
  return text ? printable(*text) : "(none)";
}

std::string subjectText(const SAMLResponse& response) {
  if (!response.subject()) return "(none)";
  const auto identifier = kestrelink::standard::nameIdOf(response);
  if (!identifier) return "(without a name identifier)";
  std::string text = shown(identifier->textContent());
  if (const auto format = attributeText(*identifier, "Format")) {
    text += " (" + printable(*format) + ")";
  }
  return text;
}

std::string authenticationText(const SAMLResponse& response) {
  const auto& element = response.responseElement();
  const auto statement = element ? element->authnStatement() : nullptr;
  if (!statement) return "(no authentication statement)";
  const std::string end =
      dateAttribute(*statement, "SessionNotOnOrAfter", statement->sessionNotOnOrAfter());
  if (end.empty()) return "not valid: its statement names no end";
  const char* state = statement->isValid()               ? "until "
                      : statement->sessionNotOnOrAfter() ? "ended "
                                                         : "not valid: until ";
  return state + end;
}

std::string nextText(const SAMLResponse& response) {
  switch (response.expectedAction()) {
    case kestrelink::SAMLExpectedActionProceed:
      return "proceed";
    case kestrelink::SAMLExpectedActionPresentUI:
      return "show the provider's sign-in user interface";
    case kestrelink::SAMLExpectedActionNone:
      break;
  }
  return "nothing the client can do";
}

std::string windowText(const SAMLAssertion& assertion) {
  const auto conditions = assertion.conditions();
  if (!conditions) return "no conditions, so never in its time window";
  const auto from = conditions->notBefore();
  const auto until = conditions->notOnOrAfter();
  const bool early = from && *from > currentTime();
  std::string text = assertion.meetsConditions() ? "in its time window"
                     : early                     ? "not yet valid"
                                                 : "expired";
  const std::string start = dateAttribute(*conditions, "NotBefore", from);
  const std::string end = dateAttribute(*conditions, "NotOnOrAfter", until);
  if (!start.empty()) text += ", from " + start;
  if (!end.empty()) text += ", until " + end;
  return text;
}

std::string assertionsText(const std::optional<kestrelink::SAMLResponseElement::Assertions>& all) {
  if (!all) return {};
  Table table;
  for (const auto& assertion : *all) {
    const std::string authentication =
        assertion->isValid() ? "" : "; its authentication is not valid";
    table.add(shown(assertion->identifier()), windowText(*assertion) + authentication);
  }
  return table.empty() ? "" : "\n  Assertions\n" + table.text("    ");
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += separator;
    text += printable(part);
  }
  return text.empty() ? "(none)" : text;
}

std::string attributesText(const SAMLResponse& response) {
  Table table;
  for (const auto& [name, values] : response.attributes()) {
    table.add(printable(name), joined(values, ", "));
  }
  return table.empty() ? "" : "\n  Attributes\n" + table.text("    ");
}

std::string decisionsText(const SAMLResponse& response, const ReadOptions& options) {
  Table table;
  for (const std::string& resource : options.resources) {
    table.add(printable(resource), shown(response.authorizationStatusForResource(resource)));
  }
  return table.empty() ? "" : "\n  Decisions\n" + table.text("    ");
}

std::string signedText(const Reading& reading) {
  if (reading.result && reading.result->response) return "verified";
  std::vector<std::string> names;
  for (const auto& element : kestrelink::standard::signedElements(*reading.response)) {
    names.push_back(element->tagName().value_or(""));
  }
  return names.empty() ? "nothing" : joined(names, ", ") + " (not verified)";
}

std::string statementsText(const SAMLResponse& response) {
  Table table;
  for (const auto& assertion : kestrelink::standard::assertionsOf(response)) {
    for (const auto& decision : kestrelink::standard::decisionsOf(*assertion)) {
      table.add(shown(decision.resource),
                shown(decision.decision) + " for " + joined(decision.actions, ", "));
    }
  }
  return table.empty() ? "" : "\n  Decision statements\n" + table.text("    ");
}

std::string unreadDatesText(const SAMLResponse& response) {
  Table table;
  for (const auto& date : kestrelink::standard::unreadDates(response)) {
    table.add(printable(date.element) + " " + date.attribute,
              "\"" + printable(date.text) + "\": " + date.reason);
  }
  return table.empty() ? "" : "\n  Dates that were not read\n" + table.text("    ");
}

std::string contents(const Reading& reading, const ReadOptions& options) {
  const SAMLResponse& response = *reading.response;
  Table table;
  const auto assertions = response.assertions();
  table.add("Root", shown(response.documentElement()->tagName()));
  table.add("Provider", shown(response.selectedProvider()));
  table.add("User", shown(response.userName()));
  table.add("Subject", subjectText(response));
  table.add("Authentication", authenticationText(response));
  table.add("Session", shown(response.authenticationSessionId()));
  table.add("Next", nextText(response));
  table.add("Status", joined(response.statusCodes(), " > "));
  table.add("Assertions", assertions ? std::to_string(assertions->size()) : "(no list)");
  if (const std::size_t encrypted = kestrelink::standard::encryptedAssertions(response)) {
    table.add("Encrypted", std::to_string(encrypted) + " more, not read");
  }
  table.add("Signed", signedText(reading));
  table.add("Audiences", joined(audiencesOf(response), ", "));
  table.add("Recipient", shown(kestrelink::standard::recipientOf(response)));
  table.add("In response to", shown(kestrelink::standard::inResponseTo(response)));
  table.add("Destination", shown(kestrelink::standard::destinationOf(response)));
  return "\n" + table.text("  ") + assertionsText(assertions) + attributesText(response) +
         decisionsText(response, options) + statementsText(response) + unreadDatesText(response);
}

}  // namespace

std::string textReport(const Reading& reading, const ReadOptions& options, bool colour) {
  std::string text = verdict(reading, options, colour);
  if (reading.response) text += contents(reading, options);
  return text;
}

}  // namespace ksaml
