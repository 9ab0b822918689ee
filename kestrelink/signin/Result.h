#pragma once

#include <memory>
#include <optional>
#include <string>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace kestrelink::signin {

/// What a message means for the client.
enum class Verdict {
  signedIn,        ///< somebody signed in: `Result::session`
  showSignInPage,  ///< the provider cannot sign anybody in without its page: begin again, not
                   ///< passive
  denied,          ///< the provider said no; `Result::response` has its status codes
  loggedOut,       ///< every session has ended
  answered,        ///< the answer to a query: read `Result::response`
  refused,         ///< nothing that the message says may be believed
};

/// Why a message is refused. `none` for every other verdict.
enum class Reason {
  none,
  tooLong,           ///< longer than `Policy::mostBytes`
  notDecodable,      ///< no message in it: not base64, not DEFLATE, a parameter twice
  notXml,            ///< not well-formed, or its processing would cost too much
  documentType,      ///< it has a document type declaration
  wrongMessage,      ///< another kind of message than the one that is expected
  notValid,          ///< not valid against the SAML 2.0 protocol schema
  schemaMissing,     ///< the schema files are not installed, so nothing can be validated
  duplicateId,       ///< an identifier is used twice
  notSigned,         ///< nothing that could be believed is signed
  signatureForm,     ///< a signature of a form that could cover something else than what is read
  algorithm,         ///< an algorithm that is not accepted
  sha1,              ///< SHA-1, without `Policy::acceptSha1`
  badSignature,      ///< not made by a key of the provider, or the text was changed
  notDecrypted,      ///< the encrypted part cannot be decrypted; never says why
  malformedDate,     ///< a date that is none
  issuer,            ///< from somebody else than the provider
  destination,       ///< sent to another URL
  audience,          ///< for another client
  recipient,         ///< for another assertion consumer
  request,           ///< the response to another request, or to none
  version,           ///< not SAML 2.0
  confirmation,      ///< no bearer confirmation holds
  condition,         ///< a condition that this library does not understand
  timeWindow,        ///< a time window does not include the current time, or has no end
  noSessionEnd,      ///< no "SessionNotOnOrAfter", without `Policy::sessionWithoutEnd`
  sessionOver,       ///< the session has ended
  noAssertion,       ///< success is claimed without an assertion
  noAuthentication,  ///< nobody signed in: there is no authentication statement
  noSubscriber,      ///< nobody is named
  otherSubscriber,   ///< the answer to a query is about somebody else
  seenBefore,        ///< the request or the assertion was used before
  tooMany,           ///< the memory of used identifiers is full
  providerExpired,   ///< the provider's metadata has expired
  notConfigured,     ///< the client or the provider lacks a key or a URL that is needed
};

/// Who is signed in. Keep `text` to have the session again after a restart: `SignIn::resume`.
struct Session {
  /// The name of the subscriber: `standard::subscriberOf`.
  std::string subscriber;
  /// The entity ID of the provider.
  std::string provider;
  /// When the session ends.
  SAMLDate until;
  /// The provider's name for the session, which a logout request repeats.
  std::optional<std::string> sessionIndex;
  /// The verified response, for its attributes: `response->attributeValuesForName(...)`.
  std::shared_ptr<SAMLResponse> response;
  /// The session as text. It is not signed: keep it where only the client can write. It holds all
  /// that the provider said about the subscriber: keep it where only the client can read.
  std::string text;
};

/// What became of a message.
struct Result {
  Verdict verdict = Verdict::refused;
  Reason reason = Reason::none;
  /// One English sentence. When the message is refused it names the value that was found.
  std::string explanation;
  /// What was believed of the message. Null when it is refused.
  std::shared_ptr<SAMLResponse> response;
  /// Only with `Verdict::signedIn`.
  std::optional<Session> session;
  /// The relay state as it came. Only a signed URL protects it.
  std::string relayState;
};

}  // namespace kestrelink::signin
