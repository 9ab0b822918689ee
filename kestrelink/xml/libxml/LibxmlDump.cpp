#include "kestrelink/xml/libxml/LibxmlDump.h"

#include <new>

#include <libxml/tree.h>
#include <libxml/xmlIO.h>

#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {

bool dumpXml(xmlNode* node, const LibxmlErrorRoute& route, std::optional<std::string>& text) {
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

bool libxmlEscapesNamespaceNames() {
  static const bool escapes = [] {
    const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
    const XmlNodeOwner node(xmlNewNode(nullptr, xmlTextOf(std::string("n"))));
    std::optional<std::string> text;
    const bool dumped = node &&
                        xmlNewNs(node.get(), xmlTextOf(std::string("<")), nullptr) != nullptr &&
                        dumpXml(node.get(), route, text) && text;
    if (!dumped) throw std::bad_alloc();
    return text.value().find("&lt;") != std::string::npos;
  }();
  return escapes;
}

}  // namespace kestrelink
