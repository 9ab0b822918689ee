#include "kestrelink/signin/Checks.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "kestrelink/signin/Dates.h"
#include "kestrelink/signin/XmlTree.h"
#include "kestrelink/standard/StandardReading.h"

namespace kestrelink::signin {
namespace {

constexpr const char* kBearer = "urn:oasis:names:tc:SAML:2.0:cm:bearer";

void requireVersion(const std::string& version, const char* what) {
  if (version == "2.0") return;
  refuse(Reason::version,
         std::string("the version of the ") + what + " is " + quoted(version) + ", not \"2.0\"");
}

void requireIssuer(const std::string& issuer, const char* what, const Expected& expected) {
  if (issuer == expected.provider.entityId) return;
  refuse(Reason::issuer, std::string("the issuer of the ") + what + " is " + quoted(issuer) +
                             ", not the provider " + quoted(expected.provider.entityId));
}

// Nothing asked: nothing may be named.
void requireRequest(const std::string& inResponseTo, const Expected& expected) {
  if (inResponseTo == (expected.pending != nullptr ? expected.pending->id : "")) return;
  if (expected.pending == nullptr) {
    refuse(Reason::request,
           "it is the response to a request " + quoted(inResponseTo) + ", and none is pending");
  }
  refuse(Reason::request, "it is the response to the request " + quoted(inResponseTo) +
                              ", not to " + quoted(expected.pending->id));
}

void requireStarted(const std::optional<SAMLDate>& from, const std::string& where,
                    const Expected& expected) {
  if (!from || SAMLDate(from->seconds() - expected.policy.clockSkew) <= expected.now) return;
  refuse(Reason::timeWindow, where + " does not hold before " + textOf(*from));
}

void requireNotEnded(SAMLDate until, const std::string& where, const Expected& expected) {
  if (SAMLDate(until.seconds() + expected.policy.clockSkew) > expected.now) return;
  refuse(Reason::timeWindow, where + " ended at " + textOf(until));
}

// The library reads an attribute by its local name. One that it does not read as a date is none to
// it, so the two must agree.
void requireRead(const XMLWrapperElement& element, const char* name, bool isRead) {
  if (isRead || !element.attributeWithName(name)) return;
  refuse(Reason::malformedDate, std::string(name) + " is not read as a date");
}

// A condition that is not understood must not be passed over (SAML 2.0 core, section 2.5.1.1).
void requireKnownConditions(const SAMLConditions& conditions) {
  constexpr std::array<std::string_view, 3> kKnown = {"AudienceRestriction", "OneTimeUse",
                                                      "ProxyRestriction"};
  for (const auto& condition : conditions.elements()) {
    const std::string name = condition->tagName().value_or("");
    if (std::find(kKnown.begin(), kKnown.end(), name) == kKnown.end()) {
      refuse(Reason::condition, "the condition " + quoted(name) + " is not understood");
    }
  }
}

void checkConditions(const SAMLConditions& conditions, const Expected& expected) {
  const auto from = conditions.notBefore(), until = conditions.notOnOrAfter();
  requireRead(conditions, "NotBefore", from.has_value());
  requireRead(conditions, "NotOnOrAfter", until.has_value());
  requireStarted(from, "the assertion", expected);
  if (until) requireNotEnded(*until, "the assertion", expected);
  requireKnownConditions(conditions);
}

// Every restriction must name the audience (SAML 2.0 core, section 2.5.1.4).
void checkAudience(const SAMLConditions& conditions, const std::string& audience) {
  for (const auto& restriction : conditions.getElementsByTagName("AudienceRestriction")) {
    std::string found;
    bool isNamed = false;
    for (const auto& each : restriction->getElementsByTagName("Audience")) {
      const std::string name = each->textContent().value_or("");
      isNamed = isNamed || name == audience;
      found += (found.empty() ? "" : ", ") + quoted(name);
    }
    if (isNamed) continue;
    refuse(Reason::audience,
           "the audience is " + (found.empty() ? "nobody" : found) + ", not " + quoted(audience));
  }
}

void checkBearer(const SAMLSubjectConfirmation& confirmation, const Expected& expected) {
  const auto data = confirmation.firstElementByTagName("SubjectConfirmationData");
  require(data != nullptr, Reason::confirmation, "the bearer confirmation has no data");
  requireRead(*data, "NotOnOrAfter", confirmation.notOnOrAfter().has_value());
  require(!data->attributeWithName("NotBefore"), Reason::confirmation,
          "the bearer confirmation has a NotBefore, which it must not have");
  const auto until = confirmation.notOnOrAfter();
  require(until.has_value(), Reason::confirmation, "the bearer confirmation has no NotOnOrAfter");
  requireNotEnded(*until, "the bearer confirmation", expected);
  const std::string recipient = confirmation.recipient().value_or("");
  if (recipient != expected.client.assertionConsumer) {
    refuse(Reason::recipient, "the recipient is " + quoted(recipient) + ", not " +
                                  quoted(expected.client.assertionConsumer));
  }
  requireRequest(confirmation.inResponseTo().value_or(""), expected);
}

// One that holds is enough (SAML 2.0 core, section 2.4). The refusal is that of the last one.
void checkConfirmations(const SAMLAssertion& assertion, const Expected& expected) {
  const auto subject = assertion.subject();
  std::optional<Refusal> refusal;
  std::string methods;
  for (const auto& each : subject ? subject->subjectConfirmations()
                                  : std::vector<std::shared_ptr<SAMLSubjectConfirmation>>()) {
    const std::string method = each->method().value_or("");
    if (method != kBearer) {
      methods += (methods.empty() ? "" : ", ") + quoted(method);
      continue;
    }
    try {
      return checkBearer(*each, expected);
    } catch (const Refusal& why) {
      refusal = why;
    }
  }
  if (refusal) throw Refusal(*refusal);
  refuse(Reason::confirmation, methods.empty() ? "the subject has no bearer confirmation"
                                               : "the only confirmations are " + methods);
}

std::vector<std::shared_ptr<SAMLAuthNStatement>> authenticationsOf(const SAMLAssertion& assertion) {
  std::vector<std::shared_ptr<SAMLAuthNStatement>> statements;
  for (const auto& element : assertion.getElementsByTagName("AuthnStatement")) {
    if (auto statement = std::dynamic_pointer_cast<SAMLAuthNStatement>(element)) {
      statements.push_back(std::move(statement));
    }
  }
  return statements;
}

// Without an allowance for clock skew: what the session's end is compared with later has none.
void checkSession(const SAMLAuthNStatement& statement, const Expected& expected) {
  const auto until = statement.sessionNotOnOrAfter();
  requireRead(statement, "SessionNotOnOrAfter", until.has_value());
  require(until.has_value(), Reason::noSessionEnd,
          "the authentication statement has no SessionNotOnOrAfter, and "
          "Policy::sessionWithoutEnd is not set");
  if (*until > expected.now) return;
  refuse(Reason::sessionOver, "the session ended at " + textOf(*until));
}

void checkAssertion(const SAMLAssertion& assertion, const Expected& expected) {
  requireVersion(standard::attributeText(assertion, "Version").value_or(""), "assertion");
  requireIssuer(assertion.issuer().value_or(""), "assertion", expected);
}

void checkSignInAssertion(const SAMLAssertion& assertion, const Expected& expected) {
  checkAssertion(assertion, expected);
  const auto conditions = assertion.conditions();
  require(conditions != nullptr, Reason::timeWindow, "the assertion has no conditions");
  checkConditions(*conditions, expected);
  require(conditions->notOnOrAfter().has_value(), Reason::timeWindow,
          "the assertion's time window has no end");
  require(conditions->firstElementByTagName("AudienceRestriction") != nullptr, Reason::audience,
          "the assertion names no audience");
  checkAudience(*conditions, expected.client.entityId);
  checkConfirmations(assertion, expected);
  for (const auto& statement : authenticationsOf(assertion)) checkSession(*statement, expected);
}

void checkAnsweredAssertion(const SAMLAssertion& assertion, const Expected& expected) {
  checkAssertion(assertion, expected);
  if (const auto conditions = assertion.conditions()) {
    checkConditions(*conditions, expected);
    checkAudience(*conditions, expected.pending->issuer);
  }
  const std::string name = nameIdentifierIn(assertion);
  if (name == expected.pending->subject) return;
  refuse(Reason::otherSubscriber, "the answer is about " + quoted(name) + ", not about " +
                                      quoted(expected.pending->subject));
}

}  // namespace

Envelope envelopeOf(const xmlNode* response) {
  Envelope envelope;
  envelope.version = attribute(response, "Version");
  envelope.destination = attribute(response, "Destination");
  envelope.inResponseTo = attribute(response, "InResponseTo");
  if (const xmlNode* issuer = firstChild(response, kAssertion, "Issuer")) {
    envelope.issuer = contentOf(issuer);
  }
  const xmlNode* status = firstChild(response, kProtocol, "Status");
  while (status != nullptr && (status = firstChild(status, kProtocol, "StatusCode")) != nullptr) {
    envelope.statusCodes.push_back(attribute(status, "Value"));
  }
  return envelope;
}

void checkEnvelope(const Envelope& envelope, const std::string& destination,
                   const Expected& expected) {
  requireVersion(envelope.version, "response");
  if (!envelope.issuer.empty()) requireIssuer(envelope.issuer, "response", expected);
  if (!envelope.destination.empty() && envelope.destination != destination) {
    refuse(Reason::destination,
           "the destination is " + quoted(envelope.destination) + ", not " + quoted(destination));
  }
  if (!envelope.inResponseTo.empty()) requireRequest(envelope.inResponseTo, expected);
}

void checkSignIn(const SAMLResponse& response, const Expected& expected) {
  const auto assertions = standard::assertionsOf(response);
  require(!assertions.empty(), Reason::noAssertion,
          "the response claims success and holds no assertion");
  for (const auto& assertion : assertions) checkSignInAssertion(*assertion, expected);
  require(!authenticationsOf(*assertions.front()).empty(), Reason::noAuthentication,
          "the assertion has no authentication statement");
}

void checkAnswer(const SAMLResponse& response, const Expected& expected) {
  for (const auto& assertion : standard::assertionsOf(response)) {
    checkAnsweredAssertion(*assertion, expected);
  }
}

SAMLDate usableUntil(const SAMLAssertion& assertion, const Policy& policy) {
  SAMLDate latest = std::chrono::sys_seconds();
  for (const auto& each : assertion.subject()->subjectConfirmations()) {
    if (const auto until = each->notOnOrAfter()) latest = std::max(latest, *until);
  }
  return latest.seconds() + policy.clockSkew;
}

std::string nameIdentifierIn(const SAMLAssertion& assertion) {
  const auto subject = assertion.subject();
  const auto identifier = subject ? standard::nameIdOf(*subject) : nullptr;
  return identifier ? identifier->textContent().value_or("") : "";
}

}  // namespace kestrelink::signin
