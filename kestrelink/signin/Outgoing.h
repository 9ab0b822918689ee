// Puts a request into its binding (SAML 2.0 bindings, sections 3.4, 3.5 and 3.2).
#pragma once

#include <string>
#include <string_view>

namespace kestrelink::signin {

/// Whether it is an http or https URL, without blanks and control characters.
bool isWebUrl(std::string_view url);

/// Refused with `notConfigured`: an endpoint that is no `isWebUrl`, a relay state of more
/// than 80 bytes (section 3.4.3).

/// The endpoint's URL with the deflated request in its query. Signed there when there is a key
/// (section 3.4.4.1).
std::string redirectUrl(const std::string& endpoint, std::string_view request,
                        std::string_view relayState, const std::string& keyPem);

/// An HTML page whose form posts the request by itself.
std::string postForm(const std::string& endpoint, std::string_view request,
                     std::string_view relayState);

std::string soapEnvelope(std::string_view request);

}  // namespace kestrelink::signin
