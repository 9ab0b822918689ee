#include "kestrelink/signin/SignIn.h"

#include <algorithm>
#include <utility>

#include "kestrelink/signin/Dates.h"
#include "kestrelink/signin/Outgoing.h"
#include "kestrelink/signin/Reading.h"
#include "kestrelink/signin/Requests.h"
#include "kestrelink/signin/Signature.h"
#include "kestrelink/signin/XmlTree.h"
#include "kestrelink/standard/StandardReading.h"

namespace kestrelink::signin {
namespace {

constexpr const char* kSuccess = "urn:oasis:names:tc:SAML:2.0:status:Success";

std::string joined(const std::vector<std::string>& codes) {
  std::string text;
  for (const std::string& code : codes) text += (text.empty() ? "" : ", ") + quoted(code);
  return text.empty() ? "no status" : text;
}

bool isSuccess(const Envelope& envelope) {
  return !envelope.statusCodes.empty() && envelope.statusCodes.front() == kSuccess;
}

// What the provider's no means. It may come unsigned: an attacker who can answer in the provider's
// place can always keep the subscriber out.
Result denied(const Reading& reading) {
  const bool wantsPage = reading.response->expectedAction() == SAMLExpectedActionPresentUI;
  Result result;
  result.verdict = wantsPage ? Verdict::showSignInPage : Verdict::denied;
  result.explanation = "the provider answered " + joined(reading.envelope.statusCodes);
  // Of an unsigned envelope around a signed assertion only the assertion was read.
  if (reading.response->statusCodes() == reading.envelope.statusCodes) {
    result.response = reading.response;
  }
  result.relayState = reading.relayState;
  return result;
}

Result believed(Verdict verdict, const Reading& reading, std::string explanation) {
  return {verdict,          Reason::none, std::move(explanation),
          reading.response, std::nullopt, reading.relayState};
}

Session sessionOf(std::shared_ptr<SAMLResponse> response, std::string text,
                  const Provider& provider) {
  const std::string subscriber = standard::subscriberOf(*response).value_or("");
  require(!subscriber.empty(), Reason::noSubscriber, "the assertion names no subscriber");
  const auto until = response->authenticationTTL();
  require(until.has_value(), Reason::noSessionEnd, "the session has no end");
  auto index = response->authenticationSessionId();
  return {subscriber,       provider.entityId,   *until,
          std::move(index), std::move(response), std::move(text)};
}

template <class Steps>
Result resultOf(Steps steps) {
  try {
    return quietly(steps);
  } catch (const Refusal& refusal) {
    Result result;
    result.reason = refusal.reason();
    result.explanation = refusal.what();
    return result;
  }
}

template <class Steps>
Started startedOf(Steps steps) {
  try {
    return quietly(steps);
  } catch (const Refusal& refusal) {
    Started started;
    started.reason = refusal.what();
    return started;
  }
}

}  // namespace

struct SignIn::Parts {
  Client client;
  Provider provider;
  Policy policy;
  std::shared_ptr<Memory> memory;

  void requireProvider() const;
  const std::string& requireUrl(const std::string& url, const char* name) const;
  const Endpoint& first(const std::vector<Endpoint>& endpoints, const char* what) const;
  Started send(const Endpoint& endpoint, const Request& request, const Pending& pending,
               bool isSigned, std::string_view relayState) const;
  template <class Make>
  Started ask(const std::vector<Endpoint>& endpoints, const char* what, const Session& session,
              std::string_view issuer, Make make) const;

  Pending pendingOf(std::string_view text, Pending::Kind kind) const;
  Expected expected(const Pending* pending) const;
  Reading read(std::string_view received, const char* root) const;
  void remember(const std::string& identifier, SAMLDate until, const char* what) const;
  void rememberRequest(const Pending& pending) const;
  void rememberAssertions(const SAMLResponse& response) const;
  Result finish(std::string_view received, const Pending* pending) const;
};

void SignIn::Parts::requireProvider() const {
  if (!provider.validUntil || *provider.validUntil > policy.clock()) return;
  refuse(Reason::providerExpired,
         "the provider's metadata expired at " + textOf(*provider.validUntil));
}

const Endpoint& SignIn::Parts::first(const std::vector<Endpoint>& endpoints,
                                     const char* what) const {
  if (endpoints.empty()) {
    refuse(Reason::notConfigured, "the provider has no URL for " + std::string(what));
  }
  return endpoints.front();
}

Started SignIn::Parts::send(const Endpoint& endpoint, const Request& request,
                            const Pending& pending, bool isSigned,
                            std::string_view relayState) const {
  require(!isSigned || !client.signingKey.empty(), Reason::notConfigured,
          "the request must be signed, and Client::signingKey is empty");
  Started started;
  started.endpoint = endpoint.url;
  started.id = request.id;
  started.pending = pending.text();
  std::string& text = endpoint.binding == Binding::redirect ? started.url
                      : endpoint.binding == Binding::post   ? started.form
                                                            : started.body;
  text = packed(request.xml, {endpoint, std::string(relayState), isSigned ? client.signingKey : "",
                              client.signingCertificate});
  return started;
}

template <class Make>
Started SignIn::Parts::ask(const std::vector<Endpoint>& endpoints, const char* what,
                           const Session& session, std::string_view issuer, Make make) const {
  return startedOf([&] {
    requireProvider();
    const Endpoint& endpoint = first(endpoints, what);
    const std::string from(issuer.empty() ? client.entityId : issuer);
    const Request request = make(from, endpoint.url);
    const auto identifier = standard::nameIdOf(*session.response);
    const Pending pending{Pending::Kind::query,
                          request.id,
                          provider.entityId,
                          from,
                          identifier ? identifier->textContent().value_or("") : "",
                          policy.clock()};
    return send(endpoint, request, pending, provider.wantsSignedRequests || policy.signRequests,
                {});
  });
}

Pending SignIn::Parts::pendingOf(std::string_view text, Pending::Kind kind) const {
  Pending pending = Pending::fromText(text);
  require(pending.kind == kind, Reason::request,
          "the text kept from the request is that of another kind of request");
  require(pending.provider == provider.entityId, Reason::request,
          "the text kept from the request is that of a request to another provider");
  if (SAMLDate(pending.begun.seconds() + policy.longestWait) > policy.clock()) return pending;
  refuse(Reason::request, "the request was made at " + textOf(pending.begun) +
                              ", longer ago than Policy::longestWait");
}

Expected SignIn::Parts::expected(const Pending* pending) const {
  return {client, provider, policy, pending, policy.clock()};
}

Reading SignIn::Parts::read(std::string_view received, const char* root) const {
  return readMessage(received, root, client, provider, policy, policy.clock());
}

void SignIn::Parts::remember(const std::string& identifier, SAMLDate until,
                             const char* what) const {
  const auto answer = memory->remember(identifier, until, policy.clock());
  if (answer == Memory::Answer::known) {
    refuse(Reason::seenBefore, std::string(what) + " was used before: " + quoted(identifier));
  }
  require(answer == Memory::Answer::remembered, Reason::tooMany,
          "the memory of used identifiers is full");
}

void SignIn::Parts::rememberRequest(const Pending& pending) const {
  remember("request " + pending.id, pending.begun.seconds() + policy.longestWait, "the request");
}

void SignIn::Parts::rememberAssertions(const SAMLResponse& response) const {
  for (const auto& assertion : standard::assertionsOf(response)) {
    remember("assertion " + provider.entityId + " " + assertion->identifier().value_or(""),
             usableUntil(*assertion, policy), "the assertion");
  }
}

Result SignIn::Parts::finish(std::string_view received, const Pending* pending) const {
  requireProvider();
  require(pending != nullptr || policy.acceptUnsolicited, Reason::request,
          "no request is pending, and Policy::acceptUnsolicited is not set");
  const Reading reading = read(received, "Response");
  const Expected wanted = expected(pending);
  checkEnvelope(reading.envelope, client.assertionConsumer, wanted);
  if (!isSuccess(reading.envelope)) {
    require(pending != nullptr && !reading.envelope.inResponseTo.empty(), Reason::request,
            "the provider's no names no request");
    return denied(reading);
  }
  require(reading.isSigned, Reason::notSigned, "nothing is signed, and so nobody can be signed in");
  checkSignIn(*reading.response, wanted);
  Result result = believed(Verdict::signedIn, reading, {});
  result.session = sessionOf(reading.response, reading.text, provider);
  result.explanation = "signed in until " + textOf(result.session->until);
  rememberAssertions(*reading.response);
  if (pending != nullptr) rememberRequest(*pending);
  return result;
}

SignIn::SignIn(Client client, Provider provider, Policy policy, std::shared_ptr<Memory> memory)
    : parts_(std::make_unique<const Parts>(Parts{std::move(client), std::move(provider),
                                                 std::move(policy),
                                                 memory ? std::move(memory) : newMemory()})) {}

SignIn::~SignIn() = default;

Started SignIn::begin(const Wishes& wishes) const {
  return startedOf([&] {
    parts_->requireProvider();
    const Endpoint& endpoint = parts_->first(parts_->provider.signOn, "sign-in");
    const Request request = signInRequest(parts_->client, endpoint.url, wishes);
    const Pending pending{Pending::Kind::signIn,   request.id, parts_->provider.entityId,
                          parts_->client.entityId, {},         parts_->policy.clock()};
    const bool isSigned = parts_->provider.wantsSignedRequests || parts_->policy.signRequests;
    return parts_->send(endpoint, request, pending, isSigned, wishes.relayState);
  });
}

Result SignIn::finish(std::string_view received, std::string_view pendingText) const {
  return resultOf([&] {
    if (pendingText.empty()) return parts_->finish(received, nullptr);
    const Pending pending = parts_->pendingOf(pendingText, Pending::Kind::signIn);
    return parts_->finish(received, &pending);
  });
}

Result SignIn::resume(std::string_view sessionText) const {
  return resultOf([&] {
    Reading reading{{}, true, {}, std::string(sessionText), readResponse(std::string(sessionText))};
    const auto assertions = standard::assertionsOf(*reading.response);
    require(!assertions.empty(), Reason::noAssertion, "the session holds no assertion");
    require(assertions.front()->issuer() == parts_->provider.entityId, Reason::issuer,
            "the session is that of another provider");
    Result result = believed(Verdict::signedIn, reading, {});
    result.session = sessionOf(reading.response, reading.text, parts_->provider);
    result.explanation = "signed in until " + textOf(result.session->until);
    if (result.session->until > parts_->policy.clock()) return result;
    refuse(Reason::sessionOver, "the session ended at " + textOf(result.session->until));
  });
}

Started SignIn::beginLogout(const Session& session, std::string_view relayState) const {
  return startedOf([&] {
    parts_->requireProvider();
    const Endpoint& endpoint = parts_->first(parts_->provider.logout, "logout");
    const Request request = logoutRequest(parts_->client, endpoint.url, session);
    const Pending pending{Pending::Kind::logout,   request.id, parts_->provider.entityId,
                          parts_->client.entityId, {},         parts_->policy.clock()};
    // A logout request is signed whenever it can be (SAML 2.0 profiles, section 4.4.4.1).
    const bool isSigned = !parts_->client.signingKey.empty() ||
                          parts_->provider.wantsSignedRequests || parts_->policy.signRequests;
    return parts_->send(endpoint, request, pending, isSigned, relayState);
  });
}

Result SignIn::finishLogout(std::string_view received, std::string_view pendingText) const {
  return resultOf([&] {
    parts_->requireProvider();
    const Pending pending = parts_->pendingOf(pendingText, Pending::Kind::logout);
    const Reading reading = parts_->read(received, "LogoutResponse");
    checkEnvelope(reading.envelope, parts_->client.logoutService, parts_->expected(&pending));
    require(reading.isSigned, Reason::notSigned, "the logout response is not signed");
    require(!reading.envelope.issuer.empty(), Reason::issuer,
            "the logout response names no issuer");
    require(!reading.envelope.inResponseTo.empty(), Reason::request,
            "the logout response names no request");
    // A second code says that not all sessions have ended.
    if (!isSuccess(reading.envelope) || reading.envelope.statusCodes.size() > 1) {
      return denied(reading);
    }
    parts_->rememberRequest(pending);
    return believed(Verdict::loggedOut, reading, "every session has ended");
  });
}

Started SignIn::askAttributes(const Session& session, const std::vector<std::string>& names,
                              std::string_view issuer) const {
  return parts_->ask(parts_->provider.attributes, "attribute queries", session, issuer,
                     [&](const std::string& from, const std::string& url) {
                       return attributeQuery(from, url, session, names);
                     });
}

Started SignIn::askDecision(const Session& session, const Question& question,
                            std::string_view issuer) const {
  return parts_->ask(parts_->provider.decisions, "decision queries", session, issuer,
                     [&](const std::string& from, const std::string& url) {
                       return decisionQuery(from, url, session, question);
                     });
}

Result SignIn::finishQuery(std::string_view received, std::string_view pendingText) const {
  return resultOf([&] {
    parts_->requireProvider();
    const Pending pending = parts_->pendingOf(pendingText, Pending::Kind::query);
    const Expected wanted = parts_->expected(&pending);
    const Reading reading = parts_->read(received, "Response");
    checkEnvelope(reading.envelope, reading.envelope.destination, wanted);
    require(!reading.envelope.inResponseTo.empty(), Reason::request, "the answer names no request");
    if (!isSuccess(reading.envelope)) return denied(reading);
    require(reading.isSigned, Reason::notSigned, "the answer is not signed");
    checkAnswer(*reading.response, wanted);
    parts_->rememberRequest(pending);
    return believed(Verdict::answered, reading, "the provider answered");
  });
}

std::string SignIn::pendingFor(const MadeRequest& request) const {
  const Pending pending{request.asked,  request.id,      parts_->provider.entityId,
                        request.issuer, request.subject, parts_->policy.clock()};
  return pending.text();
}

}  // namespace kestrelink::signin
