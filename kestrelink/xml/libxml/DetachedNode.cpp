#include "kestrelink/xml/libxml/DetachedNode.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <memory>

#include <libxml/tree.h>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

namespace kestrelink {
namespace {

constexpr const char* kReplacedCharacters = "What XML forbids in a text was written as U+FFFD";

}  // namespace

DetachedNode::~DetachedNode() {
  for (const auto& [what, count] : notes_) {
    std::array<char, 128> line{};
    std::snprintf(line.data(), line.size(), "%s (%d times)", what, count);
    logDiagnostic(line.data());
  }
}

DetachedNode DetachedNode::refused(const char* reason) {
  DetachedNode nothing;
  nothing.note(reason, 1);
  return nothing;
}

void DetachedNode::note(const char* what, int count) {
  const auto known = std::find_if(notes_.begin(), notes_.end(),
                                  [what](const auto& entry) { return entry.first == what; });
  if (known != notes_.end()) {
    known->second += count;
  } else {
    notes_.emplace_back(what, count);
  }
}

const char* DetachedNode::writable(const std::string& text, std::string& replacement) {
  auto replaced = replacementFor(text);
  if (!replaced) return text.c_str();
  note(kReplacedCharacters, 1);
  replacement = std::move(*replaced);
  return replacement.c_str();
}

void DetachedNode::addChild(DetachedNode child) {
  for (const auto& [what, count] : child.notes_) note(what, count);
  child.notes_.clear();
  if (!child) return;
  attributeNamespaces_.insert(attributeNamespaces_.end(),
                              std::make_move_iterator(child.attributeNamespaces_.begin()),
                              std::make_move_iterator(child.attributeNamespaces_.end()));
  if (xmlAddChild(node_.get(), child.node_.get()) == nullptr) return;
  [[maybe_unused]] const xmlNode* nowOwnedByParent = child.node_.release();
}

SharedXmlDoc DetachedNode::intoDocument(DetachedNode root, XmlDocOwner doc) {
  if (!root || !doc) return nullptr;
  xmlDocSetRootElement(doc.get(), root.node_.release());
  if (root.attributeNamespaces_.empty()) return doc;
  const auto records =
      std::make_shared<std::vector<XmlNsOwner>>(std::move(root.attributeNamespaces_));
  return {doc.release(), [records](xmlDoc* tree) { LibxmlFree()(tree); }};
}

}  // namespace kestrelink
