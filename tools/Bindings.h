// The bindings that carry messages: SOAP, HTTP-Redirect and HTTP-POST (SAML 2.0 bindings, sections
// 3.2, 3.4 and 3.5).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ksaml {

inline constexpr std::string_view kSoapNamespace = "http://schemas.xmlsoap.org/soap/envelope/";

/// The message in the text of a file. XML text is returned unchanged. The parameter "SAMLResponse"
/// or "SAMLRequest" of a form or URL, and base64, are decoded, and inflated if they are deflated.
/// With `isBase64` the text must be base64. Any other text is returned unchanged. `std::nullopt`,
/// with a line on standard error that names the file, for malformed base64 and when more than
/// `kMostInflated` bytes result.
std::optional<std::string> messageIn(const std::string& text, bool isBase64,
                                     const std::string& file);

/// The URL that carries the request by the HTTP-Redirect binding, unsigned.
std::string redirectUrl(const std::string& url, std::string_view request);

/// The message in a SOAP 1.1 envelope.
std::string inSoapEnvelope(const std::string& message);

}  // namespace ksaml
