#include "kestrelink/platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <utf8.h>

namespace kestrelink {
namespace {

// The property White_Space of the Unicode character database.
bool isWhiteSpace(char32_t character) {
  switch (character) {
    case U'\u0020':
    case U'\u0085':
    case U'\u00A0':
    case U'\u1680':
    case U'\u2028':
    case U'\u2029':
    case U'\u202F':
    case U'\u205F':
    case U'\u3000':
      return true;
    default:
      return (character >= U'\t' && character <= U'\r') ||
             (character >= U'\u2000' && character <= U'\u200A');
  }
}

constexpr bool isAscii(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

// How many bytes of white space the text begins with: one character's worth, or 0.
std::size_t leadingWhiteSpace(std::string_view text) {
  if (isAscii(text.front())) {
    return isWhiteSpace(static_cast<char32_t>(text.front())) ? 1 : 0;
  }
  const char* position = text.data();
  try {
    const char32_t character = utf8::next(position, text.data() + text.size());
    return isWhiteSpace(character) ? static_cast<std::size_t>(position - text.data()) : 0;
  } catch (const utf8::exception&) {
    return 0;
  }
}

std::size_t trailingWhiteSpace(std::string_view text) {
  if (isAscii(text.back())) {
    return isWhiteSpace(static_cast<char32_t>(text.back())) ? 1 : 0;
  }
  const char* const end = text.data() + text.size();
  const char* position = end;
  try {
    const char32_t character = utf8::prior(position, text.data());
    return isWhiteSpace(character) ? static_cast<std::size_t>(end - position) : 0;
  } catch (const utf8::exception&) {
    return 0;
  }
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  // Nearly every text is ASCII: that is known eight bytes at a time.
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  const char* position = bytes.data();
  const char* const end = position + bytes.size();
  for (std::uint64_t chunk = 0; end - position >= static_cast<std::ptrdiff_t>(sizeof chunk);
       position += sizeof chunk) {
    std::memcpy(&chunk, position, sizeof chunk);
    if ((chunk & kHighBits) != 0) break;
  }
  // What was passed over ends between two characters.
  return std::all_of(position, end, isAscii) || utf8::is_valid(position, end);
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = leadingWhiteSpace(text);
    if (length == 0) break;
    text.remove_prefix(length);
  }
  while (!text.empty()) {
    const std::size_t length = trailingWhiteSpace(text);
    if (length == 0) break;
    text.remove_suffix(length);
  }
  return text;
}

}  // namespace kestrelink
