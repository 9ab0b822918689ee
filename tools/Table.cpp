#include "Table.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace ksaml {
namespace {

// A C1 control character is two bytes in UTF-8: C2 and 80 to 9F.
bool isC1Control(std::string_view text, std::size_t at) {
  const auto byte = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  return byte(at) == 0xC2 && at + 1 < text.size() && byte(at + 1) >= 0x80 && byte(at + 1) <= 0x9F;
}

std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  const auto escape = [&shown](unsigned character) {
    std::array<char, 8> escaped{};
    std::snprintf(escaped.data(), escaped.size(), "\\u%04x", character);
    shown += escaped.data();
  };
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7F) {
      escape(byte);
    } else if (isC1Control(text, at)) {
      escape(static_cast<unsigned char>(text[++at]));
    } else {
      shown += text[at];
    }
  }
  return shown;
}

std::string Table::text(std::string_view indent) const {
  constexpr std::size_t kWidestName = 56;
  std::size_t width = 0;
  for (const auto& [name, value] : rows_) {
    width = std::max(width, std::min(widthOf(name), kWidestName));
  }
  std::string text;
  for (const auto& [name, value] : rows_) {
    const std::size_t padding = width > widthOf(name) ? width - widthOf(name) : 0;
    text.append(indent).append(name).append(padding + 2, ' ').append(value).append("\n");
  }
  return text;
}

}  // namespace ksaml
