// What a response says, as text: golden files keep it, and two readings of it can be compared.
#pragma once

#include <map>
#include <string>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace fuzz {

/// Values by name, without those that are null.
using Reading = std::map<std::string, std::string>;

/// All that the library reads in a response.
Reading readingOf(const kestrelink::SAMLResponse& response);

/// "name: value" on a line each.
std::string shown(const Reading& reading);

}  // namespace fuzz
