#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kestrelink {

/// Decodes base64 (RFC 4648, section 4). Characters outside the alphabet, such as line breaks, are
/// skipped. `std::nullopt` when the rest is not base64.
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

}  // namespace kestrelink
