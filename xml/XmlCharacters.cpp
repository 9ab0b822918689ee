#include "kestrelink/xml/XmlCharacters.h"

#include <algorithm>
#include <iterator>

#include <libxml/tree.h>
#include <utf8.h>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/Text.h"
#include "kestrelink/xml/LibxmlText.h"

namespace kestrelink {
namespace {

constexpr char32_t kReplacement = U'\uFFFD';

// XML 1.0, production 2 (Char).
bool isXmlCharacter(char32_t character) {
  if (character < U' ') return character == U'\t' || character == U'\n' || character == U'\r';
  return character != U'\uFFFE' && character != U'\uFFFF';
}

}  // namespace

std::string writableText(std::string_view text) {
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
  if (writable != text) logDiagnostic("What XML forbids in a text was written as U+FFFD");
  return writable;
}

bool isXmlName(const std::string& name) {
  return name.find('\0') == std::string::npos && xmlValidateName(xmlTextOf(name), 0) == 0;
}

bool isXmlNCName(const std::string& name) {
  return name.find('\0') == std::string::npos && xmlValidateNCName(xmlTextOf(name), 0) == 0;
}

}  // namespace kestrelink
