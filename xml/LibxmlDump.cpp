#include "kestrelink/xml/LibxmlDump.h"

#include <libxml/tree.h>
#include <libxml/xmlIO.h>

#include "kestrelink/xml/LibxmlErrorRoute.h"
#include "kestrelink/xml/LibxmlHandles.h"
#include "kestrelink/xml/LibxmlSetup.h"
#include "kestrelink/xml/LibxmlText.h"
#include "kestrelink/xml/StoreError.h"

namespace kestrelink {

std::optional<std::string> dumpedXml(xmlNode* node, ErrorOut error) {
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  // Not xmlNodeDump: when its buffer cannot grow, libxml2 2.9 leaks it and frees it twice.
  const XmlOutputOwner buffer(xmlAllocOutputBuffer(nullptr));
  if (!buffer) {
    storeError(error, kXMLWrapperErrorDomain, 101);
    return std::nullopt;
  }
  xmlNodeDumpOutput(buffer.get(), node->doc, node, 0, 1, nullptr);
  route.throwIfOutOfMemory();
  if (xmlOutputBufferGetSize(buffer.get()) == 0) return std::nullopt;
  return textOf(xmlOutputBufferGetContent(buffer.get()));
}

}  // namespace kestrelink
