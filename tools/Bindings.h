// How messages travel (SAML 2.0 bindings, sections 3.2, 3.4 and 3.5).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ksaml {

/// The message that a file holds: XML text as it is, or what stands in "SAMLResponse" or
/// "SAMLRequest" of a form or URL, or base64; deflated or not. With `isBase64` it must be base64.
/// Text that is nothing of all that comes back as it is. std::nullopt, with a line on standard
/// error that names the file, for base64 that is none and for what inflates to too much.
std::optional<std::string> messageIn(const std::string& text, bool isBase64,
                                     const std::string& file);

/// The URL that carries the request by the HTTP-Redirect binding, unsigned.
std::string redirectUrl(const std::string& url, std::string_view request);

/// The message in a SOAP 1.1 envelope.
std::string inSoapEnvelope(const std::string& message);

/// Whether the root of that XML text is a SOAP 1.1 envelope.
bool isSoapEnvelope(std::string_view xml);

}  // namespace ksaml
