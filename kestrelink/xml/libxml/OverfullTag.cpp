#include "kestrelink/xml/libxml/OverfullTag.h"

#include <algorithm>

#include "kestrelink/xml/libxml/XmlCharacters.h"

namespace kestrelink {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kBlanks = " \t\r\n";

// The text begins with blanks and an attribute: their length. 0 when it does not.
std::size_t lengthOfAttribute(std::string_view text) {
  const std::size_t name = text.find_first_not_of(kBlanks);
  const std::size_t afterName = text.find_first_of(" \t\r\n=\"'>&/", name);
  const std::size_t equals = text.find_first_not_of(kBlanks, afterName);
  if (name == 0 || name == afterName || equals == kNone || text[equals] != '=') return 0;
  const std::size_t quote = text.find_first_not_of(kBlanks, equals + 1);
  if (quote == kNone || (text[quote] != '"' && text[quote] != '\'')) return 0;
  const std::size_t end = text.find(text[quote], quote + 1);
  return end == kNone ? 0 : end + 1;
}

// `tag` is the text from the "<" of a tag to the next "<" or the end of the message; a tag contains
// no other "<". Counts as libxml2 does, up to the first damaged attribute.
bool hasMoreAttributes(std::string_view tag, std::size_t attributes) {
  const bool isStart =
      tag.size() > 1 && tag[0] == '<' && std::string_view("!?/").find(tag[1]) == kNone;
  if (!isStart) return false;
  tag.remove_prefix(std::min(tag.find_first_of(" \t\r\n\"'>/&=", 1), tag.size()));
  std::size_t count = 0;
  while (const std::size_t length = lengthOfAttribute(tag)) {
    if (++count > attributes) return true;
    tag.remove_prefix(length);
  }
  return false;
}

struct Section {
  std::string_view start, end;
};
constexpr Section kComment{"<!--", "-->"};
constexpr Section kCdata{"<![CDATA[", "]]>"};
constexpr Section kInstruction{"<?", "?>"};

// The text begins with a "<": the length of the section that starts there, or 1 when none does.
// `kNone` for a section that libxml2 ends before its end mark, because it or its target is too long
// or has characters that XML forbids.
std::size_t lengthAt(std::string_view text) {
  constexpr std::size_t kMostBytes = 9'000'000, kMostBytesOfTarget = 50'000;
  for (const auto& [start, end] : {kComment, kCdata, kInstruction}) {
    if (!text.starts_with(start)) continue;
    const std::size_t found = text.find(end, start.size());
    if (found > kMostBytes) return kNone;
    const std::string_view content = text.substr(start.size(), found - start.size());
    const std::string_view target = content.substr(0, content.find_first_of(kBlanks));
    const bool hasTarget =
        start != kInstruction.start || (target.size() < kMostBytesOfTarget && isXmlName(target));
    return hasTarget && !replacementFor(content) ? found + end.size() : kNone;
  }
  return 1;
}

// The comments, CDATA sections and processing instructions of a message, in one pass over it. After
// a damaged section nothing counts as hidden.
class HidingSections {
 public:
  explicit HidingSections(std::string_view message) : message_(message) {}

  // Whether the "<" at this position lies in one of them. Positions must increase from call to
  // call.
  bool hide(std::size_t position) {
    while (at_ < position) {
      at_ = message_.find('<', at_);
      if (at_ >= position) break;
      const std::size_t length = lengthAt(message_.substr(at_));
      at_ = length == kNone ? kNone : at_ + length;
    }
    return at_ != kNone && at_ > position;
  }

 private:
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

// A tag with that many attributes is at least `far` bytes long and contains no other "<". So the
// search goes back from `far` bytes ahead to the last "<", and skips everything before it unread.
bool hasTagWithMoreAttributes(std::string_view message, std::size_t attributes) {
  const std::size_t far = fewestBytes(attributes);
  HidingSections sections(message);
  for (std::size_t start = 0; mayHoldTagWithMoreAttributes(message.size() - start, attributes);) {
    const std::string_view window = message.substr(start, far);
    if (const std::size_t last = window.rfind('<'); last != 0 && last != kNone) {
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
