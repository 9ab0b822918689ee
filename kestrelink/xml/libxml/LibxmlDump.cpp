#include "kestrelink/xml/libxml/LibxmlDump.h"

#include <libxml/tree.h>
#include <libxml/xmlIO.h>

#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {

bool dumpXml(xmlNode* node, std::optional<std::string>& text) {
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  // Not xmlNodeDump: when its buffer cannot grow, libxml2 2.9 leaks it and frees it twice.
  const XmlOutputOwner buffer(xmlAllocOutputBuffer(nullptr));
  if (!buffer) return false;
  xmlNodeDumpOutput(buffer.get(), node->doc, node, 0, 1, nullptr);
  route.throwIfOutOfMemory();
  if (xmlOutputBufferGetSize(buffer.get()) > 0) {
    text = textOf(xmlOutputBufferGetContent(buffer.get()));
  }
  return true;
}

}  // namespace kestrelink
