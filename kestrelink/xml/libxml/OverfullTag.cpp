#include "kestrelink/xml/libxml/OverfullTag.h"

#include <algorithm>

#include "kestrelink/xml/libxml/XmlCharacters.h"

namespace kestrelink {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// Length of the attribute at the start of the text, with the blanks before it; 0 for none.
std::size_t lengthOfAttribute(std::string_view text) {
  const std::size_t name = text.find_first_not_of(kBlanks);
  const std::size_t afterName = text.find_first_of(" \t\r\n=\"'>&/", name);
  const std::size_t equals = text.find_first_not_of(kBlanks, afterName);
  if (name == 0 || name == afterName || equals == text.npos || text[equals] != '=') return 0;
  const std::size_t quote = text.find_first_not_of(kBlanks, equals + 1);
  if (quote == text.npos || (text[quote] != '"' && text[quote] != '\'')) return 0;
  const std::size_t end = text.find(text[quote], quote + 1);
  return end == text.npos ? 0 : end + 1;
}

// `tag` runs from its "<" to the next "<" or the end of the message. libxml2 reads attributes up to
// the first malformed one.
bool hasMoreAttributes(std::string_view tag, std::size_t attributes) {
  const bool isStart = tag.size() > 1 && tag[0] == '<' &&
                       std::string_view("!?/").find(tag[1]) == std::string_view::npos;
  if (!isStart) return false;
  tag.remove_prefix(std::min(tag.find_first_of(" \t\r\n\"'>/&=", 1), tag.size()));
  std::size_t count = 0;
  while (const std::size_t length = lengthOfAttribute(tag)) {
    if (++count > attributes) return true;
    tag.remove_prefix(length);
  }
  return false;
}

struct Kind {
  std::string_view start, end;
};
constexpr Kind kComment{"<!--", "-->"};
constexpr Kind kCdata{"<![CDATA[", "]]>"};
constexpr Kind kInstruction{"<?", "?>"};

// The comments, CDATA sections and processing instructions of a message, in one pass.
class HidingSections {
 public:
  explicit HidingSections(std::string_view message) : message_(message) {}

  // Whether the position of a "<" lies in one of them. Positions must be given in ascending order.
  bool hide(std::size_t position) {
    while (at_ < position) {
      at_ = message_.find('<', at_);
      if (at_ < position) at_ += lengthOfSection(message_.substr(at_));
    }
    return at_ != message_.npos && at_ > position;
  }

 private:
  // 1 for a "<" that starts none. libxml2 ends a section early when it is too long or has
  // characters that XML forbids: from there on nothing counts as hidden.
  std::size_t lengthOfSection(std::string_view text) {
    constexpr std::size_t kMostBytes = 9'000'000;
    for (const auto& [start, end] : {kComment, kCdata, kInstruction}) {
      if (!text.starts_with(start)) continue;
      const std::size_t found = text.find(end, start.size());
      if (found > kMostBytes) return message_.npos - at_;
      const std::string_view content = text.substr(start.size(), found - start.size());
      const bool isDamaged = replacementFor(content) ||
                             (start == kInstruction.start &&
                              !isXmlName(content.substr(0, content.find_first_of(kBlanks))));
      return isDamaged ? message_.npos - at_ : found + end.size();
    }
    return 1;
  }

  std::string_view message_;
  std::size_t at_ = 0;
};

std::size_t fewestBytes(std::size_t attributes) {
  return attributes * std::string_view(" a=''").size();
}

}  // namespace

bool mayHoldTagWithMoreAttributes(std::size_t bytes, std::size_t attributes) {
  return bytes > fewestBytes(attributes);
}

// Searches backwards for "<" from as far ahead as the shortest such tag reaches, so that most of
// the message is skipped.
bool hasTagWithMoreAttributes(std::string_view message, std::size_t attributes) {
  const std::size_t far = fewestBytes(attributes);
  HidingSections sections(message);
  for (std::size_t start = 0; mayHoldTagWithMoreAttributes(message.size() - start, attributes);) {
    const std::string_view window = message.substr(start, far);
    if (const std::size_t last = window.rfind('<'); last != 0 && last != std::string_view::npos) {
      start += last;
      continue;
    }
    const std::size_t end = std::min(message.find('<', start + 1), message.size());
    if (hasMoreAttributes(message.substr(start, end - start), attributes) &&
        !sections.hide(start)) {
      return true;
    }
    start = end;
  }
  return false;
}

}  // namespace kestrelink
