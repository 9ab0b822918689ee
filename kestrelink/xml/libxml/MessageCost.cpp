#include "kestrelink/xml/libxml/MessageCost.h"

#include <algorithm>

namespace kestrelink {

constexpr std::uint64_t kMega = 1'000'000;

constinit const std::array<MessageCost::Allowance, MessageCost::kKinds> MessageCost::kAllowances{{
    // libxml2 before 2.12 compares each attribute with all before it, before it calls back.
    {"attributes of one tag", 5'000, 0},
    // A document type declaration multiplies what follows it in more ways than can be counted.
    {"bytes of a message with a document type declaration", 16'384, 0},
    // libxml2 looks an entity up when the declaration declares it and at each reference in it,
    // which
    // it then parses; nested references multiply.
    {"entities looked up in a document type declaration", 200, 0},
    // Each may have libxml2 parse a whole entity again.
    {"references to entities", 100, 0},
    // A comparison takes some nanoseconds, and more when the names begin alike.
    {"comparisons of names", 100 * kMega, 20},
    // The validator keeps the name and namespace name of each child until its parent ends, and
    // hashes those of each element, attribute and type.
    {"bytes of names and namespace names", 4 * kMega, 20},
    // An error of the validator quotes the element; there is at most one for each attribute and
    // each piece of text.
    {"bytes of names in errors", 16 * kMega, 72},
    // The validator copies the text of an element once for each piece of it.
    {"bytes of texts in pieces", 64 * kMega, 64},
    // An element that is written declares the namespaces that it recorded.
    {"namespaces in scope of the elements", 16 * kMega, 256},
}};

MessageCost::MessageCost(std::size_t bytesOfMessage) {
  std::transform(kAllowances.begin(), kAllowances.end(), allowed_.begin(),
                 [bytesOfMessage](const Allowance& allowance) {
                   return allowance.ofAnyMessage + allowance.perByte * bytesOfMessage;
                 });
  elements_.reserve(16);
}

void MessageCost::declare(const xmlChar* prefix, const xmlChar* uri) {
  // The size of a namespace record with the two blocks of memory for its texts.
  constexpr std::size_t kBytesOfRecord = 112;
  const std::size_t length = names_.lengthOf(uri);
  longestUri_ = std::max(longestUri_, length);
  tag_.bytesDeclared += kBytesOfRecord + length + names_.lengthOf(prefix);
}

void MessageCost::startTag(const xmlChar* name, const xmlChar* uri) {
  std::uint64_t bytesInScope = tag_.bytesDeclared;
  if (!elements_.empty()) {
    elements_.back().isInText = false;
    elements_.back().hasChild = true;
    bytesInScope += elements_.back().bytesInScope;
  }
  const std::uint64_t bytesOfName = names_.lengthOf(name) + names_.lengthOf(uri);
  add(namesHashed, bytesOfName);
  add(namesQuoted, bytesOfName * (2 + tag_.attributes));
  add(namespacesWritten, bytesInScope);
  elements_.push_back({bytesOfName, 0, bytesInScope, false, false});
  tag_ = {};
}

}  // namespace kestrelink
