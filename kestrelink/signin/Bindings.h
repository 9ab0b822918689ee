// How messages travel: in a URL, a form or a SOAP envelope (SAML 2.0 bindings, sections 3.4, 3.5
// and 3.2).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kestrelink/signin/Export.h"
#include "kestrelink/signin/Policy.h"
#include "kestrelink/signin/Provider.h"

namespace kestrelink::signin {

/// The signature of a URL (SAML 2.0 bindings, section 3.4.4.1).
struct UrlSignature {
  std::string octets;     ///< what was signed, exactly as it came
  std::string algorithm;  ///< the URI of "SigAlg"
  std::string value;      ///< the bytes of "Signature"
};

/// A message as it came in, out of its binding. Nothing of it is verified.
struct Received {
  /// The XML text; of what came by SOAP the whole envelope.
  std::string xml;
  std::string relayState;
  /// Only of a message that was deflated.
  std::optional<UrlSignature> signature;
};

/// Takes a message out of what came in: a posted body, a query string or a URL, base64 (deflated or
/// not), a SOAP envelope, or XML text. A parameter that appears twice is refused: two readers could
/// choose differently. Whether the XML text is well-formed is not looked at. `std::nullopt` with
/// the reason, an English sentence.
KESTRELINK_SIGNIN_EXPORT std::optional<Received> decode(std::string_view received,
                                                        std::string& reason,
                                                        const Policy& policy = {});

/// How a request is sent.
struct Sending {
  /// The URL is not needed for SOAP: the client posts the body itself.
  Endpoint endpoint;
  /// What the provider sends back with its response, at most 80 bytes. SOAP has none.
  std::string relayState = {};
  /// PEM, RSA or EC. Empty: the request is not signed.
  std::string signingKey = {};
  /// Its certificate, for a signature in the XML text to name. It may be empty.
  std::string signingCertificate = {};
};

/// Puts a request, XML text, into its binding: a URL to open (redirect), an HTML page that posts
/// itself, or the body to post (SOAP, as text/xml). `std::nullopt` with the reason, an English
/// sentence: an endpoint that is no http or https URL, a relay state that is too long, a key that
/// cannot be read, text that is no XML.
KESTRELINK_SIGNIN_EXPORT std::optional<std::string> encode(const std::string& request,
                                                           const Sending& sending,
                                                           std::string& reason);

/// The request with a signature inside, in no binding. `std::nullopt` with the reason.
KESTRELINK_SIGNIN_EXPORT std::optional<std::string> signedRequest(const std::string& request,
                                                                  const std::string& keyPem,
                                                                  const std::string& certificatePem,
                                                                  std::string& reason);

/// The request as the value of a form's "SAMLRequest": base64 on one line.
KESTRELINK_SIGNIN_EXPORT std::string formValue(std::string_view request);

}  // namespace kestrelink::signin
