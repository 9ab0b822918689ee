// From elements to libxml2's nodes to text. All of it are operations of elements, attributes and
// namespaces, because element classes override `xmlNode`.

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include <libxml/tree.h>

#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/XMLWrapperElement.h"
#include "kestrelink/xml/libxml/DetachedNode.h"
#include "kestrelink/xml/libxml/LibxmlDump.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"
#include "kestrelink/xml/libxml/LibxmlText.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

namespace kestrelink {
namespace {

// Writing is recursive, so its depth is limited. libxml2 reads only 256 levels.
constexpr int kDeepestWritten = 1000;
constinit thread_local int levelsAbove = 0;

class WrittenLevel {
 public:
  WrittenLevel() { ++levelsAbove; }
  ~WrittenLevel() { --levelsAbove; }
  WrittenLevel(const WrittenLevel&) = delete;
  WrittenLevel& operator=(const WrittenLevel&) = delete;
};

}  // namespace

xmlNs* XMLWrapperNamespace::xmlNsForNode(xmlNode* node, ErrorOut error) const {
  const auto replaced = href_ ? replacementForNamespaceName(*href_) : std::nullopt;
  const std::optional<std::string>& href = replaced ? replaced : href_;
  // Newer versions of libxml2 would declare "xml" too.
  xmlNs* const record = !prefix_ || (isXmlNCName(*prefix_) && *prefix_ != "xml")
                            ? xmlNewNs(node, xmlTextOf(href), xmlTextOf(prefix_))
                            : nullptr;
  if (record == nullptr)
    storeError(error, kXMLWrapperErrorDomain, kXMLWrapperErrorNamespaceNotWritten);
  return record;
}

bool XMLWrapperAttribute::xmlAttrNodeForNode(DetachedNode& node, ErrorOut error) const {
  xmlNs* record = nullptr;
  if (ns_) {
    XmlNsOwner standingAlone(ns_->xmlNsForNode(nullptr, error));
    record = standingAlone.get();
    if (standingAlone) node.keep(std::move(standingAlone));
  }
  std::string replacement;
  const xmlChar* const value = value_ ? BAD_CAST node.writable(*value_, replacement) : nullptr;
  const xmlAttr* made = nullptr;
  if (isXmlName(name_)) {
    made = ns_ ? xmlNewNsProp(node.get(), record, xmlTextOf(name_), value)
               : xmlNewProp(node.get(), xmlTextOf(name_), value);
  }
  if (made == nullptr)
    storeError(error, kXMLWrapperErrorDomain, kXMLWrapperErrorAttributeNotWritten);
  return made != nullptr;
}

void XMLWrapperElement::reorderChildElements() {
  List ordered;
  ordered.reserve(elements_.size());
  if (const auto& sequence = childElementSequence()) {
    for (const std::string& name : *sequence) {
      std::copy_if(elements_.begin(), elements_.end(), std::back_inserter(ordered),
                   [&name](const auto& child) { return child->tagName() == name; });
    }
  }
  elements_ = std::move(ordered);
}

DetachedNode XMLWrapperElement::xmlNode(ErrorOut error) {
  if (levelsAbove == kDeepestWritten) {
    return DetachedNode::refused("An element below 1000 others cannot be written");
  }
  const WrittenLevel level;
  const std::optional<std::string>& name = tagName();
  if (!name || !isXmlName(*name)) {
    return DetachedNode::refused("An element whose tag name is no XML name cannot be written");
  }
  DetachedNode node(XmlNodeOwner(xmlNewNode(nullptr, xmlTextOf(*name))));
  if (!node) return {};
  if (childElementSequence()) reorderChildElements();

  for (const auto& [key, attribute] : attributes_) attribute->xmlAttrNodeForNode(node, error);
  const NamespaceMap& declared = namespaces();
  // Appended here: libxml2 would compare each prefix with all before it, and they all differ.
  for (xmlNs** last = &node.get()->nsDef; const auto& ns : declared) {
    if ((*last = ns->xmlNsForNode(nullptr, error)) != nullptr) last = &(*last)->next;
  }
  if (node.get()->nsDef != nullptr) xmlSetNs(node.get(), node.get()->nsDef);
  if (textContent_) {
    std::string replacement;
    xmlAddChild(node.get(), xmlNewText(BAD_CAST node.writable(*textContent_, replacement)));
  }
  for (const auto& child : elements_) node.addChild(child->xmlNode(error));
  return node;
}

std::optional<std::string> XMLWrapperElement::xmlString(ErrorOut error) {
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  const DetachedNode node = xmlNode(error);
  route.throwIfOutOfMemory();
  if (!node) return std::nullopt;
  std::optional<std::string> text;
  if (!dumpXml(node.get(), route, text))
    storeError(error, kXMLWrapperErrorDomain, kXMLWrapperErrorNotWritten);
  return text;
}

}  // namespace kestrelink
