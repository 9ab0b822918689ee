#pragma once

#include <string>
#include <vector>

#include "kestrelink/signin/Export.h"
#include "kestrelink/signin/Policy.h"

namespace kestrelink::signin {

/// What this client is to its providers: a service provider (SAML 2.0 metadata, section 2.4.4).
///
///     signin::Client client{.entityId = "https://tv.example",
///                           .assertionConsumer = "https://tv.example/acs",
///                           .signingKey = pem};
///
/// Keys and certificates are PEM text, not file names. An empty text or list: there is none.
struct Client {
  /// The issuer of every request, and the audience that an assertion must name.
  std::string entityId;
  /// Where the provider posts its response to a sign-in: the URL that its "Destination" and the
  /// "Recipient" of its assertion must name.
  std::string assertionConsumer;
  /// Where the provider sends its response to a logout request.
  std::string logoutService = {};
  /// The name that the provider may show to the subscriber.
  std::string name = {};
  /// The private key, RSA or EC, that signs requests. Without it requests are not signed.
  std::string signingKey = {};
  /// The certificate of `signingKey`, for `metadataOf`.
  std::string signingCertificate = {};
  /// The private RSA keys that decrypt: each is tried, so that a key can be replaced.
  std::vector<std::string> decryptionKeys = {};
  /// The certificate of the decryption key that providers should use, for `metadataOf`.
  std::string encryptionCertificate = {};
};

/// The client's own metadata (SAML 2.0 metadata, sections 2.3.2 and 2.4.4) as XML text, valid
/// against the metadata schema: to be given to providers. It wants assertions signed, and says that
/// requests are signed when the policy signs them all. A certificate that cannot be read is left
/// out. Empty when a text has a character that XML has not, or is not UTF-8.
KESTRELINK_SIGNIN_EXPORT std::string metadataOf(const Client& client, const Policy& policy = {});

}  // namespace kestrelink::signin
