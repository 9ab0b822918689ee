#include "tests/support/Reading.h"

#include "kestrelink/standard/StandardReading.h"

#include "tests/support/Shown.h"

namespace fuzz {
namespace {

using namespace kestrelink;
using kestrelink::testing::shown;

// The error is one of before, which a verdict may leave, change or clear.
template <class Ask>
std::string verdict(Ask ask) {
  std::optional<ErrorInfo> error = ErrorInfo{"the error of before", 1, {}};
  const bool yes = ask(&error);
  if (ask(nullptr) != yes) return "another one without an error";
  return (yes ? "yes, " : "no, ") + shown(error);
}

// Those that messages of the tests name, and others.
constexpr const char* kResources[] = {
    "https://tv.example/1", "https://tv.example/2", "https://TV.example/1", "not a URL", "",
    "/{id}|\u00FC x[]=1"};
constexpr const char* kRequestors[] = {"a", "b", "c", ""};

void readAssertion(Reading& all, const SAMLAssertion& assertion) {
  all["audiences"] += shown(standard::audiencesOf(assertion));
  for (const std::string requestor : kRequestors) {
    if (assertion.isValidForRequestor(requestor)) all["valid for"] += "(" + requestor + ")";
  }
  for (const standard::Decision& decision : standard::decisionsOf(assertion)) {
    all["decisions"] += "(" + shown(decision.resource, decision.decision, decision.actions) + ")";
  }
}

}  // namespace

Reading readingOf(const SAMLResponse& response) {
  const auto subject = response.subject();
  const auto nameId = subject ? standard::nameIdOf(*subject) : nullptr;
  Reading all = {{"in its time window",
                  verdict([&](auto error) { return response.assertionMeetsConditions(error); })},
                 {"valid", verdict([&](auto error) { return response.isValid(error); })},
                 {"authentication", response.hasValidAuthentication() ? "valid" : "-"},
                 {"issuer", shown(response.selectedProvider())},
                 {"subject", shown(nameId ? nameId->textContent() : std::nullopt)},
                 {"user name", shown(response.userName())},
                 {"session index", shown(response.authenticationSessionId())},
                 {"session end", shown(response.authenticationTTL())},
                 {"status", shown(response.statusCodes())},
                 {"primary status", shown(response.primaryStatusCode())},
                 {"action", std::to_string(response.expectedAction())},
                 {"assertions", shown(response.assertions())},
                 {"recipient", shown(standard::recipientOf(response))},
                 {"in response to", shown(standard::inResponseTo(response))},
                 {"destination", shown(standard::destinationOf(response))},
                 {"signed", shown(standard::signedElements(response))}};
  if (const auto count = standard::encryptedAssertions(response)) all["encrypted"] = shown(count);
  const auto attributes = response.attributes();
  for (const auto& [name, values] : attributes) all["attribute " + name] = shown(values);
  for (const std::string& name :
       {attributes.empty() ? "" : attributes.begin()->first, std::string("A")}) {
    all["values of " + name] = shown(response.attributeValuesForName(name));
  }
  for (const auto& assertion : response.assertions().value_or(SAMLResponseElement::Assertions())) {
    readAssertion(all, *assertion);
  }
  for (const std::string resource : kResources) {
    const auto own = response.authorizationStatusForResource(resource),
               standard = standard::decisionForResource(response, resource);
    if (own || standard) all["decision for " + resource] = shown(own, standard);
  }
  for (const standard::UnreadDate& date : standard::unreadDates(response)) {
    all["unread " + date.element + " " + date.attribute] = date.reason;
  }
  std::erase_if(all, [](const auto& each) { return each.second == "-"; });
  return all;
}

std::string shown(const Reading& reading) {
  std::string text;
  for (const auto& [name, value] : reading) text.append(name).append(": ").append(value) += '\n';
  return text;
}

}  // namespace fuzz
