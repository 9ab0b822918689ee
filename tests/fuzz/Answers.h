// The answers to a message as one text, so that two readings of it can be compared.
#pragma once

#include <string>

#include <libxml/tree.h>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace fuzz {

/// As the library answers them.
std::string answersOf(const kestrelink::SAMLResponse& response);

/// As libxml2's tree answers them, walked by hand: written anew here, sharing no code with the
/// library but the text of a date.
std::string answersByHand(const xmlDoc* doc);

}  // namespace fuzz
