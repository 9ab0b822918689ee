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

constexpr bool isAsciiByte(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

constexpr bool isAsciiWhiteSpace(char byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

// Bytes of the white space character that the text begins with; 0 for none.
std::size_t leadingWhiteSpace(std::string_view text) {
  if (isAsciiByte(text.front())) return isAsciiWhiteSpace(text.front()) ? 1 : 0;
  const char* position = text.data();
  try {
    const char32_t character = utf8::next(position, text.data() + text.size());
    return isWhiteSpace(character) ? static_cast<std::size_t>(position - text.data()) : 0;
  } catch (const utf8::exception&) {
    return 0;
  }
}

std::size_t trailingWhiteSpace(std::string_view text) {
  if (isAsciiByte(text.back())) return isAsciiWhiteSpace(text.back()) ? 1 : 0;
  const char* const end = text.data() + text.size();
  const char* position = end;
  try {
    const char32_t character = utf8::prior(position, text.data());
    return isWhiteSpace(character) ? static_cast<std::size_t>(end - position) : 0;
  } catch (const utf8::exception&) {
    return 0;
  }
}

template <char lowest>
bool isAsciiFrom(std::string_view bytes) {
  // Eight bytes at a time. The last eight may overlap the previous ones.
  constexpr std::size_t kChunk = sizeof(std::uint64_t);
  constexpr std::uint64_t kEachByte = 0x0101010101010101;
  constexpr std::uint64_t lowestOfEach = kEachByte * static_cast<unsigned char>(lowest);
  const auto isChunkAscii = [](const char* start) {
    std::uint64_t chunk = 0;
    std::memcpy(&chunk, start, kChunk);
    // The subtraction sets the top bit of a byte that is too low.
    return ((chunk | (chunk - lowestOfEach)) & (kEachByte * 0x80)) == 0;
  };
  if (bytes.size() < kChunk) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char byte) { return isAsciiByte(byte) && byte >= lowest; });
  }
  const char* const lastChunk = bytes.data() + bytes.size() - kChunk;
  for (const char* position = bytes.data(); position < lastChunk; position += kChunk) {
    if (!isChunkAscii(position)) return false;
  }
  return isChunkAscii(lastChunk);
}

}  // namespace

bool isPlainAscii(std::string_view bytes) { return isAsciiFrom<' '>(bytes); }

bool isUtf8(std::string_view bytes) {
  return isAsciiFrom<'\0'>(bytes) || utf8::is_valid(bytes.begin(), bytes.end());
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
