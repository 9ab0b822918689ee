// Text as the library understands it: UTF-8, always.
#pragma once

#include <string_view>

namespace kestrelink {

/// Whether the bytes are UTF-8 in the sense of RFC 3629: no overlong form, no surrogate, nothing
/// cut off, nothing above U+10FFFF.
bool isUtf8(std::string_view bytes);

/// The text without Unicode's white space and newlines at both ends. Bytes that are not UTF-8 are
/// not white space.
std::string_view trimmed(std::string_view text);

}  // namespace kestrelink
