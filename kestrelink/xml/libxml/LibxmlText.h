// Conversions between xmlChar and char; both are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <libxml/xmlstring.h>

#include "kestrelink/platform/Text.h"

namespace kestrelink {

inline std::string_view viewOf(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

/// `std::nullopt` for null, and for bytes that are not UTF-8, which recovery mode lets into a tree.
inline std::optional<std::string> textOf(const xmlChar* text) {
  if (text == nullptr || !isUtf8(viewOf(text))) return std::nullopt;
  return std::string(viewOf(text));
}

inline const xmlChar* xmlTextOf(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

inline const xmlChar* xmlTextOf(const std::optional<std::string>& text) {
  return text ? xmlTextOf(*text) : nullptr;
}

}  // namespace kestrelink
