// Whether a verified message is for this client, from its provider, to its request, and now. What
// is not, is refused; nothing is returned.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <libxml/tree.h>

#include "kestrelink/saml/messages/SAMLResponse.h"
#include "kestrelink/signin/Client.h"
#include "kestrelink/signin/Pending.h"
#include "kestrelink/signin/Policy.h"
#include "kestrelink/signin/Provider.h"

namespace kestrelink::signin {

/// What a message has to fit.
struct Expected {
  const Client& client;
  const Provider& provider;
  const Policy& policy;
  const Pending* pending;  // null: nothing was asked
  std::chrono::system_clock::time_point now;
};

/// What a response says outside of its assertions, as it came in: signed or not.
struct Envelope {
  std::string version, issuer;
  std::string destination, inResponseTo;  // empty: there is none
  std::vector<std::string> statusCodes;   // the outermost first
};
Envelope envelopeOf(const xmlNode* response);

/// Version, issuer, destination and request: whatever the envelope states has to fit, so that an
/// unsigned one around a signed assertion cannot contradict it.
void checkEnvelope(const Envelope& envelope, const std::string& destination,
                   const Expected& expected);

/// Every assertion is for this client and this request, holds now (SAML 2.0 profiles, section
/// 4.1.4.2), and the first says who signed in until when.
void checkSignIn(const SAMLResponse& response, const Expected& expected);

/// Every assertion is about the subscriber of the query, for its issuer, and holds now.
void checkAnswer(const SAMLResponse& response, const Expected& expected);

/// When the last of the bearer confirmations ends: until then the assertion could be used again.
SAMLDate usableUntil(const SAMLAssertion& assertion, const Policy& policy);

/// The name identifier's text; empty when there is none.
std::string nameIdentifierIn(const SAMLAssertion& assertion);

}  // namespace kestrelink::signin
