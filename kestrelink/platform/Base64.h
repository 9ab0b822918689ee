#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kestrelink {

/// The bytes behind a base64 text (RFC 4648, section 4). Characters outside the alphabet, such as
/// line breaks, are passed over; absent when what remains is not base64.
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

}  // namespace kestrelink
