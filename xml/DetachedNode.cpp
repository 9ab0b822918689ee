#include "kestrelink/xml/DetachedNode.h"

#include <iterator>
#include <memory>

#include <libxml/tree.h>

namespace kestrelink {

bool DetachedNode::addChild(DetachedNode child) {
  if (!child) return true;
  attributeNamespaces_.insert(attributeNamespaces_.end(),
                              std::make_move_iterator(child.attributeNamespaces_.begin()),
                              std::make_move_iterator(child.attributeNamespaces_.end()));
  if (xmlAddChild(node_.get(), child.node_.get()) == nullptr) return false;
  [[maybe_unused]] const xmlNode* nowOwnedByParent = child.node_.release();
  return true;
}

SharedXmlDoc DetachedNode::intoDocument(DetachedNode root, XmlDocOwner doc) {
  if (!root || !doc) return nullptr;
  xmlDocSetRootElement(doc.get(), root.node_.release());
  const auto records =
      std::make_shared<std::vector<XmlNsOwner>>(std::move(root.attributeNamespaces_));
  return {doc.release(), [records](xmlDoc* tree) { LibxmlFree()(tree); }};
}

}  // namespace kestrelink
