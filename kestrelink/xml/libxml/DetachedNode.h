#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

/// A new element node with its subtree, in no document, or absent. It keeps the namespace records
/// that only its attributes refer to, which libxml2 would not free, and notes on what could not be
/// written as it was set: when the outermost node goes they are logged, each once, with its count.
class DetachedNode {
 public:
  DetachedNode() = default;
  DetachedNode(DetachedNode&&) = default;
  DetachedNode& operator=(DetachedNode&&) = default;
  ~DetachedNode();
  explicit DetachedNode(XmlNodeOwner node) : node_(std::move(node)) {}

  explicit operator bool() const { return node_ != nullptr; }
  _xmlNode* get() const { return node_.get(); }

  /// An absent node, and why.
  static DetachedNode refused(const char* reason);

  /// The text as it can be written in this node; held by `replacement` when it is another.
  const char* writable(const std::string& text, std::string& replacement);

  /// Takes over what the child kept and noted, and makes the child, if it is present, the last
  /// child; false when libxml2 refuses.
  bool addChild(DetachedNode child);

  /// Keeps the record for as long as the node.
  void keep(XmlNsOwner attributeNamespace) {
    attributeNamespaces_.push_back(std::move(attributeNamespace));
  }

  /// Makes the node the root of a document, which keeps all that the node kept; null when either
  /// is absent.
  static SharedXmlDoc intoDocument(DetachedNode root, XmlDocOwner doc);

 private:
  void note(const char* what, int count);

  std::vector<std::pair<const char*, int>> notes_;
  // In this order: the node goes first, then what its attributes refer to.
  std::vector<XmlNsOwner> attributeNamespaces_;
  XmlNodeOwner node_;
};

}  // namespace kestrelink
