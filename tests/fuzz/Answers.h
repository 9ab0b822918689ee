// What a response says as named lists, so that two readings of it can be compared.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <libxml/tree.h>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace fuzz {

using Answers = std::map<std::string, std::vector<std::string>>;

/// As the library reads it.
Answers answersOf(const kestrelink::SAMLResponse& response);

/// As libxml2's tree has it, walked by hand: written anew here, sharing no code with the library
/// but the text of a date.
Answers answersByHand(const xmlDoc* doc);

/// All of them in one text.
std::string shown(const Answers& answers);

}  // namespace fuzz
