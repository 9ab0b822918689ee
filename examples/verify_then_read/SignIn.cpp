#include "SignIn.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string_view>

#include "kestrelink/standard/StandardReading.h"

namespace verify_then_read {
namespace {

namespace ks = kestrelink;

using Reason = std::optional<std::string>;  // std::nullopt: nothing to object to

std::string valueOf(const ks::XMLWrapperElement& element, const char* name) {
  return ks::standard::attributeText(element, name).value_or("");
}

// The library takes a date in any other form for one that is not there.
Reason unreadDate(const ks::XMLWrapperElement& element, const char* name, bool isRead) {
  if (isRead || !element.attributeWithName(name)) return std::nullopt;
  return std::string(name) + " " + valueOf(element, name) + " is not of the form " +
         "2026-01-15T20:15:02Z";
}

bool differs(const std::optional<std::string>& expected, const std::optional<std::string>& found) {
  return expected && found != expected;
}

Reason windowReason(const ks::XMLWrapperElement& element, std::optional<ks::SAMLDate> from,
                    std::optional<ks::SAMLDate> until) {
  if (auto why = unreadDate(element, "NotBefore", from.has_value())) return why;
  if (auto why = unreadDate(element, "NotOnOrAfter", until.has_value())) return why;
  const auto now = std::chrono::system_clock::now();
  if ((!from || *from <= now) && (!until || *until > now)) return std::nullopt;
  return "the time window of " + element.tagName().value_or("") +
         " does not include the current time";
}

Reason conditionsReason(const ks::SAMLAssertion& assertion) {
  const auto conditions = assertion.conditions();
  if (!conditions) return "an assertion has no conditions";
  const auto until = conditions->notOnOrAfter();
  if (auto why = windowReason(*conditions, conditions->notBefore(), until)) return why;
  if (!until) return "an assertion's time window has no end";
  return std::nullopt;
}

// Every restriction has to name the audience, and there has to be one.
bool isFor(const ks::SAMLAssertion& assertion, const std::string& audience) {
  const auto restrictions = assertion.conditions()->getElementsByTagName("AudienceRestriction");
  return !restrictions.empty() &&
         std::all_of(restrictions.begin(), restrictions.end(), [&](const auto& restriction) {
           const auto audiences = restriction->getElementsByTagName("Audience");
           return std::any_of(audiences.begin(), audiences.end(),
                              [&](const auto& each) { return each->textContent() == audience; });
         });
}

Reason confirmationReason(const ks::SAMLSubjectConfirmation& confirmation,
                          const Expected& expected) {
  if (const auto data = confirmation.firstElementByTagName("SubjectConfirmationData")) {
    auto why = windowReason(*data, confirmation.notBefore(), confirmation.notOnOrAfter());
    if (why) return why;
  }
  if (differs(expected.recipient, confirmation.recipient())) {
    return "an assertion is meant for another recipient";
  }
  if (differs(expected.inResponseTo, confirmation.inResponseTo())) {
    return "an assertion is for another request";
  }
  return std::nullopt;
}

// One confirmation that holds is enough (SAML 2.0 core, section 2.4).
Reason subjectReason(const ks::SAMLAssertion& assertion, const Expected& expected) {
  const bool asked = expected.recipient || expected.inResponseTo;
  Reason why = asked ? Reason("the subject has no confirmation") : std::nullopt;
  const auto subject = assertion.subject();
  if (!subject) return why;
  for (const auto& confirmation : subject->subjectConfirmations()) {
    why = confirmationReason(*confirmation, expected);
    if (!why) return std::nullopt;
  }
  return why;
}

Reason authenticationReason(const ks::SAMLAuthNStatement& statement) {
  const char* const name = "SessionNotOnOrAfter";
  const bool isRead = statement.sessionNotOnOrAfter().has_value();
  if (auto why = unreadDate(statement, name, isRead)) return why;
  if (!isRead) return "the authentication statement has no SessionNotOnOrAfter";
  if (!statement.isValid()) return "the authentication has expired";
  return std::nullopt;
}

Reason assertionReason(const ks::SAMLAssertion& assertion, const Expected& expected) {
  if (auto why = conditionsReason(assertion)) return why;
  if (auto why = subjectReason(assertion, expected)) return why;
  const auto statement = assertion.authentication();
  if (auto why = statement ? authenticationReason(*statement) : std::nullopt) return why;
  if (expected.audience && !isFor(assertion, *expected.audience)) {
    return "an assertion is meant for another audience";
  }
  if (differs(expected.issuer, assertion.issuer())) return "an assertion has another issuer";
  return std::nullopt;
}

Outcome refused(std::string reason) { return {Verdict::Refused, std::move(reason)}; }

Outcome readSignIn(const ks::SAMLResponse& response, const Expected& expected) {
  const auto assertions = response.assertions().value_or(ks::SAMLResponseElement::Assertions());
  if (assertions.empty()) return refused("there is no assertion that can be read");
  for (const auto& assertion : assertions) {
    if (auto why = assertionReason(*assertion, expected)) return refused(*why);
  }
  const auto statement = assertions.front()->authentication();
  if (!statement) return refused("there is no authentication statement");
  const auto name = ks::standard::subscriberOf(response);
  if (!name) return refused("no subscriber is named");
  return {Verdict::SignedIn, *name + " until " + valueOf(*statement, "SessionNotOnOrAfter")};
}

std::string statusOf(const ks::SAMLResponse& response) {
  std::string joined;
  for (const std::string& code : response.statusCodes())
    joined += (joined.empty() ? "" : " ") + code;
  return joined;
}

}  // namespace

Outcome readVerified(const std::string& trusted, const Expected& expected) {
  // What `parseResponse` does, with the reasons told apart: it says 401 to most of them.
  const auto& controller = ks::SAMLParserController::sharedInstance();
  if (!controller.schema()) return refused("the schema is missing, so nothing can be validated");
  const auto bytes = std::make_shared<const std::string>(trusted);
  const auto response = ks::SAMLResponse::initWithData(bytes, controller.schema());
  if (!response || !response->responseElement())
    return refused("the response is not valid against the schema");

  const auto& root = *response->responseElement();
  const auto issuer = response->selectedProvider(), request = root.relatedRequest();
  if (issuer && differs(expected.issuer, issuer)) return refused("the response has another issuer");
  if (request && differs(expected.inResponseTo, request)) {
    return refused("the response is for another request");
  }

  const auto action = response->expectedAction();
  if (action == ks::SAMLExpectedActionPresentUI) return {Verdict::ShowSignInPage, ""};
  if (action != ks::SAMLExpectedActionProceed) return {Verdict::Denied, statusOf(*response)};
  if (root.tagName() != "LogoutResponse") return readSignIn(*response, expected);
  // A second code says that not all sessions have ended.
  const bool everywhere = response->statusCodes().size() == 1;
  return {everywhere ? Verdict::LoggedOut : Verdict::Denied, everywhere ? "" : statusOf(*response)};
}

}  // namespace verify_then_read
