// The library's text encoding is UTF-8.
#pragma once

#include <string_view>

namespace kestrelink {

/// Whether every byte is ASCII and none is below the space.
bool isPlainAscii(std::string_view bytes);

/// Whether the bytes are UTF-8 (RFC 3629): no overlong form, no surrogate, no truncated sequence,
/// nothing above U+10FFFF.
bool isUtf8(std::string_view bytes);

/// The text without Unicode's white space and newlines at both ends. Bytes that are not UTF-8 are
/// not white space.
std::string_view trimmed(std::string_view text);

}  // namespace kestrelink
