#include "kestrelink/xml/XMLWrapperAttribute.h"

#include <libxml/tree.h>

#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/libxml/DetachedNode.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"
#include "kestrelink/xml/libxml/LibxmlText.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

namespace kestrelink {

std::shared_ptr<XMLWrapperAttribute> XMLWrapperAttribute::initWithNode(
    const xmlAttr* record, std::shared_ptr<const XMLWrapperNamespace> ns) {
  auto attribute = std::make_shared<XMLWrapperAttribute>();
  attribute->readNode(record, std::move(ns));
  return attribute;
}

void XMLWrapperAttribute::readNode(const xmlAttr* record,
                                   std::shared_ptr<const XMLWrapperNamespace> ns) {
  name_ = viewOf(record->name);
  type_ = static_cast<std::int32_t>(record->atype);
  ns_ = std::move(ns);
  const xmlNode* const first = record->children;
  if (first != nullptr && first->type == XML_TEXT_NODE) value_ = textOf(first->content);
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

}  // namespace kestrelink
