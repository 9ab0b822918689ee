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
  /// `redirect` for what was deflated, `post` too for base64 and for XML text.
  Binding binding = Binding::post;
  std::string xml;  ///< the XML text; for SOAP that of the whole envelope
  std::string relayState;
  std::optional<UrlSignature> signature;
};

/// Takes a message out of what came in: a posted body, a query string or a URL, base64 (deflated or
/// not), a SOAP envelope, or XML text. A parameter that appears twice is refused: two readers could
/// choose differently. Whether the XML text is well-formed is not looked at. `std::nullopt` with
/// the reason, an English sentence.
KESTRELINK_SIGNIN_EXPORT std::optional<Received> decode(std::string_view received,
                                                        std::string& reason,
                                                        const Policy& policy = {});

}  // namespace kestrelink::signin
