#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

/// A new element node with its subtree, in no document; may be null. It owns the namespace records
/// that only its attributes refer to, which libxml2 would not free. It also counts what could not
/// be written as it was set; the outermost node's destructor logs each kind once, with its count.
class DetachedNode {
 public:
  DetachedNode() = default;
  DetachedNode(DetachedNode&&) = default;
  DetachedNode& operator=(DetachedNode&&) = default;
  ~DetachedNode();
  explicit DetachedNode(XmlNodeOwner node) : node_(std::move(node)) {}

  explicit operator bool() const { return node_ != nullptr; }
  _xmlNode* get() const { return node_.get(); }

  /// A null node, with the reason for the log.
  static DetachedNode refused(const char* reason);

  /// The text as it can be written in this node; stored in `replacement` when it differs.
  const char* writable(const std::string& text, std::string& replacement);

  /// Takes over the child's records and notes and, unless the child is null, appends it as the last
  /// child.
  void addChild(DetachedNode child);

  /// Keeps the record for as long as the node.
  void keep(XmlNsOwner attributeNamespace) {
    attributeNamespaces_.push_back(std::move(attributeNamespace));
  }

  /// Makes the node the root of a document, which then owns the node's records; null when either is
  /// null.
  static SharedXmlDoc intoDocument(DetachedNode root, XmlDocOwner doc);

 private:
  void note(const char* what, int count);

  std::vector<std::pair<const char*, int>> notes_;
  // Order matters: the node is destroyed before the records its attributes refer to.
  std::vector<XmlNsOwner> attributeNamespaces_;
  XmlNodeOwner node_;
};

}  // namespace kestrelink
