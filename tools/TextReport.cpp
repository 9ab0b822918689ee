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
  if (date) return dateText(*date) + " (" + beside(*date) + ")";
  const auto text = attributeText(element, name);
  if (!text) return {};
  return "\"" + printable(*text) + "\" (malformed: read as if it were not there)";
}

// Verdict

struct KnownError {
  std::string_view domain;
  std::int64_t code;
  const char* sentence;
};

constexpr std::string_view kXml = kestrelink::kXMLWrapperErrorDomain;
constexpr std::string_view kSaml = "SAMLParserErrorDomain";
constexpr KnownError kKnownErrors[] = {
    {kXml, kestrelink::kXMLWrapperErrorNotValid,
     "it was not found valid against the SAML 2.0 protocol schema"},
    {kXml, kestrelink::kXMLWrapperErrorNoTree, "there is no XML in it"},
    {kSaml, kestrelink::kSAMLParserErrorNotUtf8, "it is not UTF-8 text"},
    {kSaml, kestrelink::kSAMLParserErrorWrongRoot,
     "its root element is neither Response nor LogoutResponse"},
    {kSaml, kestrelink::kSAMLParserErrorNoValidAssertion, "it has assertions, but none is valid"},
    {kSaml, kestrelink::kSAMLParserErrorSignature, "a signature says that it is not valid"},
};

const char* timeReason(const SAMLResponse& response, const ReadOptions& options) {
  return options.cached || response.assertionMeetsConditions()
             ? "the authentication of every assertion has expired, or has no end"
             : "no assertion's time window includes the current time";
}

std::string reasonOf(const Reading& reading, const ReadOptions& options) {
  if (!reading.error) {
    return reading.response ? "no assertion has conditions" : "there is no element in it";
  }
  for (const KnownError& known : kKnownErrors) {
    if (known.domain == reading.error->domain && known.code == reading.error->code) {
      return known.sentence;
    }
  }
  return reading.response ? timeReason(*reading.response, options) : "it could not be read";
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

std::string verdict(const Reading& reading, const ReadOptions& options, bool colour) {
  const std::string word = reading.accepted ? "accepted" : "rejected";
  std::string text = printable(reading.file) + ": ";
  text += colour ? (reading.accepted ? "\033[1;32m" : "\033[1;31m") + word + "\033[0m" : word;
  if (!reading.accepted) text += ": " + reasonOf(reading, options);
  if (reading.accepted && isAllEncrypted(*reading.response)) {
    text += ", but its assertions are encrypted: nothing was read";
  }
  text += "\n";
  if (reading.error) text += errorDetails(*reading.error);
  if (!reading.validated) text += "  not validated: no schema\n";
  if (reading.accepted && !reading.response->responseElement()) {
    text += "  its root is no response: nothing was judged\n";
  }
  return text;
}

// Contents of the message

std::string shown(const std::optional<std::string>& text) {
  return text ? printable(*text) : "(none)";
}

std::string subjectText(const std::shared_ptr<kestrelink::SAMLSubject>& subject) {
  if (!subject) return "(none)";
  const auto identifier = kestrelink::standard::nameIdOf(*subject);
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

std::string conditionsText(const SAMLAssertion& assertion) {
  const auto conditions = assertion.conditions();
  if (!conditions) return "no conditions, so never met";
  const auto from = conditions->notBefore();
  const auto until = conditions->notOnOrAfter();
  std::string text = "conditions met";
  if (!assertion.meetsConditions()) {
    const bool early = from && (!until || *from > currentTime());
    text = early ? "not yet valid, for " + spanText(from->seconds() - currentTime().seconds())
                 : "expired by " + spanText(currentTime().seconds() - until->seconds());
  }
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
    table.add(
        shown(assertion->identifier()),
        std::string(assertion->isValid() ? "valid; " : "not valid; ") + conditionsText(*assertion));
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

std::string signedText(const SAMLResponse& response) {
  std::vector<std::string> names;
  for (const auto& element : kestrelink::standard::signedElements(response)) {
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

std::string contents(const SAMLResponse& response, const ReadOptions& options) {
  Table table;
  const auto assertions = response.assertions();
  table.add("Root", shown(response.documentElement()->tagName()));
  table.add("Provider", shown(response.selectedProvider()));
  table.add("User", shown(response.userName()));
  table.add("Subject", subjectText(response.subject()));
  table.add("Authentication", authenticationText(response));
  table.add("Session", shown(response.authenticationSessionId()));
  table.add("Next", nextText(response));
  table.add("Status", joined(response.statusCodes(), " > "));
  table.add("Assertions", assertions ? std::to_string(assertions->size()) : "(no list)");
  if (const std::size_t encrypted = kestrelink::standard::encryptedAssertions(response)) {
    table.add("Encrypted", std::to_string(encrypted) + " more, not read");
  }
  table.add("Signed", signedText(response));
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
  if (reading.response) text += contents(*reading.response, options);
  return text;
}

}  // namespace ksaml
