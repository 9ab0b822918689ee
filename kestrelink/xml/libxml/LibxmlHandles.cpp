#include "kestrelink/xml/libxml/LibxmlHandles.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlschemas.h>
#include <libxml/xpath.h>

namespace kestrelink {

void LibxmlFree::operator()(_xmlDoc* doc) const noexcept { xmlFreeDoc(doc); }
void LibxmlFree::operator()(_xmlNode* node) const noexcept { xmlFreeNode(node); }
void LibxmlFree::operator()(_xmlNs* ns) const noexcept { xmlFreeNs(ns); }
void LibxmlFree::operator()(_xmlOutputBuffer* buffer) const noexcept {
  static_cast<void>(xmlOutputBufferClose(buffer));
}
void LibxmlFree::operator()(_xmlParserCtxt* context) const noexcept { xmlFreeParserCtxt(context); }
void LibxmlFree::operator()(_xmlParserInputBuffer* buffer) const noexcept {
  xmlFreeParserInputBuffer(buffer);
}
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

}  // namespace kestrelink
