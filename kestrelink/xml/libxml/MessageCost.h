// What it costs to parse, validate, read and write a message, counted while it is parsed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include <libxml/xmlstring.h>

namespace kestrelink {

/// A message may cost a constant times its length plus a constant, of each kind that libxml2 or
/// this library spends. Most lengths are known to libxml2 only as texts that end with a zero byte;
/// the lengths of the latest are kept.
class MessageCost {
 public:
  enum Kind : unsigned char {
    attributesOfATag,
    bytesWithDocumentType,
    entitiesLookedUp,
    entityReferences,
    comparisons,
    namesHashed,
    namesQuoted,
    textJoined,
    namespacesWritten,
  };
  struct Allowance {
    const char* of;
    std::uint64_t ofAnyMessage, perByte;
  };
  static constexpr std::size_t kKinds = 9;
  static const std::array<Allowance, kKinds> kAllowances;

  explicit MessageCost(std::size_t bytesOfMessage);

  void add(Kind kind, std::uint64_t cost) {
    if ((spent_[kind] += cost) > allowed_[kind]) exceeded_ = &kAllowances[kind];
  }
  /// Null unless an allowance is exceeded.
  const Allowance* exceeded() const { return exceeded_; }
  std::uint64_t spent(Kind kind) const { return spent_[kind]; }
  std::uint64_t allowed(Kind kind) const { return allowed_[kind]; }

  /// One namespace that the tag which starts next declares.
  void declare(const xmlChar* prefix, const xmlChar* uri);
  /// One attribute of the tag which starts next.
  void attribute(const xmlChar* name, const xmlChar* uri) {
    ++tag_.attributes;
    if (uri != nullptr) add(namesHashed, names_.lengthOf(uri));
    if (isTypeName(name)) add(namesHashed, longestUri_);
  }
  void startTag(const xmlChar* name, const xmlChar* uri);
  std::size_t lengthOf(const xmlChar* name) { return names_.lengthOf(name); }
  void endTag() {
    if (!elements_.empty()) elements_.pop_back();
  }
  void text(std::size_t bytes) {
    if (elements_.empty()) return;
    Element& element = elements_.back();
    if (!element.isInText) startPiece(element);
    element.bytesOfText += bytes;
  }
  /// A comment, an instruction, a CDATA section or a reference: what follows is a text of its own.
  void endPiece() {
    if (!elements_.empty()) elements_.back().isInText = false;
  }

 private:
  // Lengths of the latest names. libxml2 keeps one copy of each, so the address identifies it.
  class Measured {
   public:
    std::size_t lengthOf(const xmlChar* text) {
      if (text == nullptr) return 0;
      Entry& entry = entries_[(reinterpret_cast<std::uintptr_t>(text) / 8) % kEntries];
      if (entry.text != text) {
        entry = {text, std::strlen(reinterpret_cast<const char*>(text))};
      }
      return entry.length;
    }

   private:
    struct Entry {
      const xmlChar* text = nullptr;
      std::size_t length = 0;
    };
    static constexpr std::size_t kEntries = 16;
    std::array<Entry, kEntries> entries_;
  };

  struct Tag {
    std::uint64_t attributes = 0, bytesDeclared = 0;
  };
  struct Element {
    std::uint64_t bytesOfName, bytesOfText, bytesInScope;
    bool isInText, hasChild;
  };

  static bool isTypeName(const xmlChar* name) {
    return name[0] == 't' && std::strcmp(reinterpret_cast<const char*>(name), "type") == 0;
  }

  void startPiece(Element& element) {
    element.isInText = true;
    if (element.bytesOfText == 0) return;  // counted with the tag
    add(namesQuoted, element.bytesOfName);
    // Only an element without children has its pieces joined by the validator.
    if (!element.hasChild) add(textJoined, element.bytesOfText);
  }

  std::array<std::uint64_t, kKinds> spent_{}, allowed_{};
  const Allowance* exceeded_ = nullptr;
  std::vector<Element> elements_;
  Tag tag_;
  Measured names_;
  std::size_t longestUri_ = 0;
};

}  // namespace kestrelink
