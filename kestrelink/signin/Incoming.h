#pragma once

#include <string_view>

#include "kestrelink/signin/Bindings.h"

namespace kestrelink::signin {

/// As `decode`. Refused: `tooLong`, `notDecodable`.
Received unpacked(std::string_view received, const Policy& policy);

}  // namespace kestrelink::signin
