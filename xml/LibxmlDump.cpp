#include "kestrelink/xml/LibxmlDump.h"

#include <libxml/tree.h>

#include "kestrelink/xml/LibxmlHandles.h"
#include "kestrelink/xml/LibxmlSetup.h"
#include "kestrelink/xml/LibxmlText.h"
#include "kestrelink/xml/StoreError.h"

namespace kestrelink {

std::optional<std::string> dumpedXml(xmlNode* node, ErrorOut error) {
  ensureLibxmlParser();
  const XmlBufferOwner buffer(xmlBufferCreate());
  if (!buffer) {
    storeError(error, kXMLWrapperErrorDomain, 101);
    return std::nullopt;
  }
  if (xmlNodeDump(buffer.get(), node->doc, node, 0, 1) <= 0) return std::nullopt;
  return textOf(xmlBufferContent(buffer.get()));
}

}  // namespace kestrelink
