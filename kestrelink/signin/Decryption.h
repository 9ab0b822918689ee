// Decrypts what a provider encrypted for the client.
#pragma once

#include <string>
#include <vector>

#include <libxml/tree.h>

namespace kestrelink::signin {

/// Replaces each "EncryptedAssertion", "EncryptedID" and "EncryptedAttribute" below the element by
/// what it holds (SAML 2.0 core, sections 2.3.4, 2.2.4 and 2.7.3.2). True when there were any.
///
/// Refused: `algorithm` by name for one that is not accepted; everything else with `notDecrypted`
/// and the same words, so that nobody learns from the answer what a changed text decrypts to.
bool decrypt(xmlNode* element, const std::vector<std::string>& keysPem, std::size_t mostBytes);

}  // namespace kestrelink::signin
