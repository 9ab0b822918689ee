#pragma once

#include <string>
#include <string_view>

#include "kestrelink/signin/Bindings.h"

namespace kestrelink::signin {

/// Whether it is an http or https URL, without blanks and control characters.
bool isWebUrl(std::string_view url);

/// As `encode`. Refused: `notConfigured`, `notXml`.
std::string packed(const std::string& request, const Sending& sending);

}  // namespace kestrelink::signin
