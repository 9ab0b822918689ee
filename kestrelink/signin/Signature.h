// Makes and verifies signatures of XML elements and of URLs.
#pragma once

#include <string>
#include <string_view>

#include <libxml/tree.h>

#include "kestrelink/signin/Bindings.h"
#include "kestrelink/signin/Keys.h"

namespace kestrelink::signin {

/// The bytes whose digest a key of the signer signed: the canonical form of the element around the
/// signature, without the signature and without comments. Refused when the signature is not of the
/// plain kind that SAML allows (core, section 5.4), is about something else, or is not the
/// signer's. Removes the signature's `KeyInfo` from the document.
std::string signedText(xmlNode* signature, const Signer& signer);

/// Refused unless a key of the signer signed those octets.
void verify(const UrlSignature& signature, const Signer& signer);

/// The message, XML text, with an enveloped signature after its "Issuer" (or as the first child):
/// RSA-SHA256 or ECDSA-SHA256, by the kind of the key.
std::string withSignature(const std::string& xml, const std::string& keyPem,
                          const std::string& certificatePem);

/// The URI of the algorithm that this key signs with, and the signature of the octets.
std::string signatureAlgorithmOf(const std::string& keyPem);
std::string signatureOver(std::string_view octets, const std::string& keyPem);

}  // namespace kestrelink::signin
