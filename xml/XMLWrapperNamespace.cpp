#include "kestrelink/xml/XMLWrapperNamespace.h"

#include <libxml/tree.h>

#include "kestrelink/xml/LibxmlText.h"

namespace kestrelink {

std::shared_ptr<XMLWrapperNamespace> XMLWrapperNamespace::initWithNsNode(const xmlNs* record) {
  return std::make_shared<XMLWrapperNamespace>(textOf(record->prefix), textOf(record->href));
}

xmlNs* XMLWrapperNamespace::xmlNsForNode(xmlNode* node, ErrorOut error) const {
  xmlNs* record = xmlNewNs(node, xmlTextOf(href_), xmlTextOf(prefix_));
  if (record == nullptr) storeError(error, kXMLWrapperErrorDomain, 205);
  return record;
}

}  // namespace kestrelink
