#include "Table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

#include <utf8.h>

namespace ksaml {
namespace {

struct Range {
  char32_t first, last;
};

// The general categories Cc, Cf, Zl, Zp and Co of Unicode 15, and what is reserved between them.
constexpr Range kUnseen[] = {
    {0x00, 0x1F},       {0x7F, 0x9F},       {0xAD, 0xAD},       {0x600, 0x605},
    {0x61C, 0x61C},     {0x6DD, 0x6DD},     {0x70F, 0x70F},     {0x890, 0x891},
    {0x8E2, 0x8E2},     {0x180E, 0x180E},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x206F},   {0xE000, 0xF8FF},   {0xFEFF, 0xFEFF},   {0xFFF0, 0xFFFB},
    {0x110BD, 0x110BD}, {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0000, 0xE00FF}, {0xF0000, 0x10FFFF}};

bool isUnseen(char32_t character) {
  return std::any_of(std::begin(kUnseen), std::end(kUnseen), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  const auto escape = [&shown](const char* format, unsigned number) {
    std::array<char, 16> escaped{};
    std::snprintf(escaped.data(), escaped.size(), format, number);
    shown += escaped.data();
  };
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end;) {
    const char* const start = at;
    try {
      const char32_t character = utf8::next(at, end);
      if (isUnseen(character)) {
        escape(character > 0xFFFF ? "\\U%08x" : "\\u%04x", character);
      } else {
        shown.append(start, at);
      }
    } catch (const utf8::exception&) {
      escape("\\x%02x", static_cast<unsigned char>(*start));
      at = start + 1;
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
