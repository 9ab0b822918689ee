#include "kestrelink/platform/Base64.h"

#include <cstddef>

namespace kestrelink {
namespace {

std::optional<unsigned> sixBitsOf(char character) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::size_t place = kAlphabet.find(character);
  if (place == std::string_view::npos) return std::nullopt;
  return static_cast<unsigned>(place);
}

}  // namespace

// Done here, because a library for it would cost a cold start more than all that uses it.
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 4 * 3);
  unsigned word = 0;
  unsigned bits = 0;  // of the word that are in no byte yet
  unsigned padding = 0;
  for (const char character : text) {
    if (character == '=') {
      const bool leftOver = (word & ((1U << bits) - 1)) != 0;
      if (bits == 0 || padding > 2 || leftOver) return std::nullopt;
      ++padding;
      bits -= 2;
    } else if (const auto six = sixBitsOf(character)) {
      if (padding > 0) return std::nullopt;
      word = (word << 6) | *six;
      bits += 6;
      if (bits < 8) continue;
      bits -= 8;
      bytes.push_back(static_cast<std::uint8_t>(word >> bits));
    }
  }
  if (bits != 0) return std::nullopt;
  return bytes;
}

}  // namespace kestrelink
