// The encodings that bindings are made of. `std::nullopt`: malformed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelink::signin {

/// Base64 (RFC 4648, section 4) with blanks and line breaks between the characters.
std::optional<std::string> fromBase64(std::string_view text);
/// On one line.
std::string toBase64(std::string_view bytes);

/// DEFLATE (RFC 1951), without a header. Refused with `tooLong` when more than `most` bytes come
/// out: a small input can inflate to gigabytes.
std::optional<std::string> inflated(std::string_view bytes, std::size_t most);
std::string deflated(std::string_view bytes);

/// Percent escapes (RFC 3986, section 2.1).
std::optional<std::string> fromUrlText(std::string_view text);
/// Everything but letters, digits and "-._~" is escaped.
std::string toUrlText(std::string_view text);

}  // namespace kestrelink::signin
