#include "kestrelink/xml/LibxmlHandles.h"

#include <iterator>
#include <utility>

#include <libxml/tree.h>
#include <libxml/xmlschemas.h>
#include <libxml/xpath.h>

namespace kestrelink {

void LibxmlFree::operator()(_xmlBuffer* buffer) const noexcept { xmlBufferFree(buffer); }
void LibxmlFree::operator()(_xmlDoc* doc) const noexcept { xmlFreeDoc(doc); }
void LibxmlFree::operator()(_xmlNode* node) const noexcept { xmlFreeNode(node); }
void LibxmlFree::operator()(_xmlNs* ns) const noexcept { xmlFreeNs(ns); }
void LibxmlFree::operator()(_xmlSchema* schema) const noexcept { xmlSchemaFree(schema); }
void LibxmlFree::operator()(_xmlSchemaParserCtxt* context) const noexcept {
  xmlSchemaFreeParserCtxt(context);
}
void LibxmlFree::operator()(_xmlSchemaValidCtxt* context) const noexcept {
  xmlSchemaFreeValidCtxt(context);
}
void LibxmlFree::operator()(_xmlXPathContext* context) const noexcept {
  xmlXPathFreeContext(context);
}
void LibxmlFree::operator()(_xmlXPathObject* object) const noexcept { xmlXPathFreeObject(object); }

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
