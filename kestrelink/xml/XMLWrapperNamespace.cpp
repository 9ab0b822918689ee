#include "kestrelink/xml/XMLWrapperNamespace.h"

#include <libxml/tree.h>

#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/libxml/LibxmlText.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

namespace kestrelink {

std::shared_ptr<XMLWrapperNamespace> XMLWrapperNamespace::initWithNsNode(const xmlNs* record) {
  return std::make_shared<XMLWrapperNamespace>(textOf(record->prefix), textOf(record->href));
}

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

}  // namespace kestrelink
