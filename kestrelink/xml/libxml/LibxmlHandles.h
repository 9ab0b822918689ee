// Owners of libxml2's handles. Only `LibxmlFree` calls libxml2's free functions.
#pragma once

#include <memory>

struct _xmlDoc;
struct _xmlNode;
struct _xmlNs;
struct _xmlOutputBuffer;
struct _xmlParserCtxt;
struct _xmlParserInputBuffer;
struct _xmlSchema;
struct _xmlSchemaParserCtxt;
struct _xmlSchemaValidCtxt;
struct _xmlXPathContext;
struct _xmlXPathObject;

namespace kestrelink {

struct LibxmlFree {
  void operator()(_xmlDoc* doc) const noexcept;
  void operator()(_xmlNode* node) const noexcept;
  void operator()(_xmlNs* ns) const noexcept;
  void operator()(_xmlOutputBuffer* buffer) const noexcept;
  void operator()(_xmlParserCtxt* context) const noexcept;
  void operator()(_xmlParserInputBuffer* buffer) const noexcept;
  void operator()(_xmlSchema* schema) const noexcept;
  void operator()(_xmlSchemaParserCtxt* context) const noexcept;
  void operator()(_xmlSchemaValidCtxt* context) const noexcept;
  void operator()(_xmlXPathContext* context) const noexcept;
  void operator()(_xmlXPathObject* object) const noexcept;
};

using XmlDocOwner = std::unique_ptr<_xmlDoc, LibxmlFree>;
using XmlNodeOwner = std::unique_ptr<_xmlNode, LibxmlFree>;
using XmlNsOwner = std::unique_ptr<_xmlNs, LibxmlFree>;
using XmlOutputOwner = std::unique_ptr<_xmlOutputBuffer, LibxmlFree>;
using XmlInputBufferOwner = std::unique_ptr<_xmlParserInputBuffer, LibxmlFree>;
using XmlParserOwner = std::unique_ptr<_xmlParserCtxt, LibxmlFree>;
using XmlSchemaOwner = std::unique_ptr<_xmlSchema, LibxmlFree>;
using XmlSchemaParserOwner = std::unique_ptr<_xmlSchemaParserCtxt, LibxmlFree>;
using XmlSchemaValidatorOwner = std::unique_ptr<_xmlSchemaValidCtxt, LibxmlFree>;
using XmlXPathContextOwner = std::unique_ptr<_xmlXPathContext, LibxmlFree>;
using XmlXPathObjectOwner = std::unique_ptr<_xmlXPathObject, LibxmlFree>;

/// A libxml2 tree with shared ownership.
using SharedXmlDoc = std::shared_ptr<_xmlDoc>;

/// A node and the tree it belongs to; `doc` is null for a node without a document.
struct XmlNodeRef {
  SharedXmlDoc doc;
  _xmlNode* node = nullptr;
};

}  // namespace kestrelink
