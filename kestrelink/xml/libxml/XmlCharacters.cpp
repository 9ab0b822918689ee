#include "kestrelink/xml/libxml/XmlCharacters.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

#include <utf8.h>

#include "kestrelink/platform/Text.h"
#include "kestrelink/xml/libxml/LibxmlDump.h"

namespace kestrelink {
namespace {

constexpr char32_t kReplacement = U'\uFFFD';

// XML 1.0, production 2 (Char).
bool isXmlCharacter(char32_t character) {
  if (character < U' ') return character == U'\t' || character == U'\n' || character == U'\r';
  return character != U'\uFFFE' && character != U'\uFFFF';
}

// A function object, so that it inlines.
constexpr auto isLetter = [](char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
};

struct Range {
  char32_t first, last;
};

// XML 1.0, fifth edition, production 4 (NameStartChar) without the colon, and what production 4a
// (NameChar) adds. libxml2's own check of names is older and refuses what its parser reads.
constexpr Range kNameStart[] = {
    {U'A', U'Z'},     {U'_', U'_'},     {U'a', U'z'},     {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
constexpr Range kNameMore[] = {
    {U'-', U'.'}, {U'0', U'9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t Count>
bool isIn(const Range (&ranges)[Count], char32_t character) {
  return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

bool isName(std::string_view name, bool colonAllowed) {
  if (name.empty()) return false;
  if (std::all_of(name.begin(), name.end(), isLetter)) return true;
  if (!isUtf8(name)) return false;
  for (auto position = name.begin(); position != name.end();) {
    const bool atStart = position == name.begin();
    const char32_t character = utf8::unchecked::next(position);
    const bool fits = isIn(kNameStart, character) || (colonAllowed && character == U':') ||
                      (!atStart && isIn(kNameMore, character));
    if (!fits) return false;
  }
  return true;
}

constexpr std::size_t kLongestReference = std::string_view("&#1114111;").size();

// XML 1.0, production 66 (CharRef), or 68 (EntityRef) of a predefined entity.
bool isCharacterReference(std::string_view text) {
  const std::string_view name = text.substr(1, text.find(';') - 1);
  if (name.size() + 2 > text.size()) return false;
  if (!name.starts_with('#')) {
    constexpr std::string_view kPredefined[] = {"amp", "lt", "gt", "quot", "apos"};
    return std::find(std::begin(kPredefined), std::end(kPredefined), name) != std::end(kPredefined);
  }
  const bool isHex = name.starts_with("#x");
  const std::string_view digits = name.substr(isHex ? 2 : 1);
  std::uint32_t number = 0;
  const auto [end, failure] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, isHex ? 16 : 10);
  return failure == std::errc() && end == digits.data() + digits.size() && number <= 0x10FFFF &&
         (number < 0xD800 || number > 0xDFFF) && isXmlCharacter(number);
}

}  // namespace

std::optional<std::string> replacementFor(std::string_view text) {
  if (isPlainAscii(text)) return std::nullopt;  // most texts
  std::string valid;
  if (isUtf8(text)) {
    valid = text;
  } else {
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), kReplacement);
  }
  std::string writable;
  for (auto position = valid.cbegin(); position != valid.cend();) {
    const char32_t character = utf8::unchecked::next(position);
    utf8::unchecked::append(isXmlCharacter(character) ? character : kReplacement,
                            std::back_inserter(writable));
  }
  if (writable == text) return std::nullopt;
  return writable;
}

std::optional<std::string> replacementForNamespaceName(std::string_view name) {
  const bool hasMarkup =
      name.find('&') != std::string_view::npos || name.find('<') != std::string_view::npos;
  if (!hasMarkup || libxmlEscapesNamespaceNames()) return replacementFor(name);
  const std::string valid = replacementFor(name).value_or(std::string(name));
  std::string writable;
  for (std::size_t at = 0; at < valid.size(); ++at) {
    const bool isBare =
        valid[at] == '&' && !isCharacterReference(valid.substr(at, kLongestReference));
    if (isBare) {
      writable += "&amp;";
    } else if (valid[at] == '<') {
      writable += "&lt;";
    } else {
      writable += valid[at];
    }
  }
  return writable;
}

bool isXmlName(std::string_view name) { return isName(name, true); }

bool isXmlNCName(std::string_view name) { return isName(name, false); }

}  // namespace kestrelink
