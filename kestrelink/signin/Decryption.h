// Decrypts what a provider encrypted for the client (SAML 2.0 core, sections 2.3.4, 2.2.4 and
// 2.7.3.2).
#pragma once

#include <string>
#include <vector>

#include <libxml/tree.h>

namespace kestrelink::signin {

/// What the client decrypts with, and how long what it decrypts may be.
struct Decryptor {
  const std::vector<std::string>& keysPem;
  std::size_t mostBytes;
};

/// The reason of every failure: who changed the text must not learn what it decrypts to.
[[noreturn]] void refuseEncrypted();

/// Replaces each "EncryptedAssertion" directly in the response by its assertion. What is encrypted
/// in that stays, for a signature inside may cover it.
///
/// Refused: `algorithm` by name for one that is not accepted, `notConfigured` without a key;
/// everything else with `refuseEncrypted`.
void decryptAssertions(xmlNode* response, const Decryptor& decryptor);

/// Replaces each "EncryptedAssertion", "EncryptedID" and "EncryptedAttribute" below the element by
/// what it holds. Refused as above.
void decryptBelow(xmlNode* element, const Decryptor& decryptor);

}  // namespace kestrelink::signin
