#pragma once

#include <string>
#include <string_view>

#include <libxml/tree.h>

namespace verify_then_read {

/// Starts xmlsec, once for the process and for good. A program that starts it elsewhere removes
/// the call in `signedText`.
void startXmlsec();

/// The bytes whose digest the holder of the certificate's key signed: the canonical form of the
/// element around the signature, without the signature and without comments. Throws
/// `std::runtime_error` with the reason when the signature is not of the plain kind that SAML
/// allows (core, section 5.4), or is about something else, or is not the key's.
///
/// Removes the signature's `KeyInfo` from the document.
std::string signedText(xmlNode* signature, std::string_view certificatePem);

}  // namespace verify_then_read
