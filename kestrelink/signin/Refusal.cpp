#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {

void requireLength(std::string_view text, std::size_t most) {
  if (text.size() <= most) return;
  refuse(Reason::tooLong, "the text has " + std::to_string(text.size()) + " bytes, and at most " +
                              std::to_string(most) + " are read");
}

std::string quoted(std::string_view value) {
  constexpr std::size_t kLongest = 200;
  std::string text = "\"";
  for (const char character : value.substr(0, kLongest)) {
    const bool isControl = static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
    text += isControl ? '?' : character;
  }
  return text + (value.size() > kLongest ? "...\"" : "\"");
}

}  // namespace kestrelink::signin
