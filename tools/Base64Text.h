#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ksaml {

/// Decodes a base64 form value (RFC 4648, section 4; white space is allowed anywhere);
/// `std::nullopt` when it is malformed.
std::optional<std::string> fromBase64(std::string_view formValue);

/// The text as a base64 form value, on one line.
std::string toBase64(std::string_view text);

}  // namespace ksaml
