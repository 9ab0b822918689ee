#include "kestrelink/platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <utf8.h>

namespace kestrelink {
namespace {

// The property White_Space of the Unicode character database, above ASCII.
bool isWhiteSpace(char32_t character) {
  switch (character) {
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
      return character >= U'\u2000' && character <= U'\u200A';
  }
}

constexpr auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };

constexpr bool isAsciiWhiteSpace(char byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

// Bytes of the white space character that the text begins with; 0 for none.
std::size_t leadingWhiteSpace(std::string_view text) {
  if (isAscii(text.front())) return isAsciiWhiteSpace(text.front()) ? 1 : 0;
  const char* position = text.data();
  try {
    const char32_t character = utf8::next(position, text.data() + text.size());
    return isWhiteSpace(character) ? static_cast<std::size_t>(position - text.data()) : 0;
  } catch (const utf8::exception&) {
    return 0;
  }
}

std::size_t trailingWhiteSpace(std::string_view text) {
  if (isAscii(text.back())) return isAsciiWhiteSpace(text.back()) ? 1 : 0;
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
  // Most texts are ASCII: check eight bytes at a time. The last eight may overlap the previous
  // ones.
  constexpr std::size_t kChunk = sizeof(std::uint64_t);
  const auto chunkIsAscii = [](const char* start) {
    std::uint64_t chunk = 0;
    std::memcpy(&chunk, start, kChunk);
    return (chunk & 0x8080808080808080) == 0;
  };
  const char* position = bytes.data();
  const char* const end = position + bytes.size();
  const auto left = [&] { return static_cast<std::size_t>(end - position); };
  while (left() >= kChunk && chunkIsAscii(position)) position += kChunk;
  const bool restIsAscii = bytes.size() < kChunk ? std::all_of(position, end, isAscii)
                                                 : left() < kChunk && chunkIsAscii(end - kChunk);
  // The ASCII that was skipped ends at a character boundary.
  return restIsAscii || utf8::is_valid(position, end);
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
