#include "kestrelink/xml/XMLWrapperDoc.h"

#include <utility>

#include <libxml/tree.h>

#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/TreeReader.h"
#include "kestrelink/xml/XMLWrapperQuery.h"
#include "kestrelink/xml/XMLWrapperSchema.h"
#include "kestrelink/xml/XPathPrefixes.h"
#include "kestrelink/xml/libxml/BoundedParse.h"
#include "kestrelink/xml/libxml/DetachedNode.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {

XMLWrapperDoc::XMLWrapperDoc(Making) {}
XMLWrapperDoc::~XMLWrapperDoc() = default;

std::shared_ptr<XMLWrapperDoc> XMLWrapperDoc::initWithData(SharedBytes data, SharedBytes schema,
                                                           ErrorOut error) {
  auto doc = std::make_shared<XMLWrapperDoc>(Making());
  return doc->startWithData(std::move(data), std::move(schema), error) ? doc : nullptr;
}

std::shared_ptr<XMLWrapperDoc> XMLWrapperDoc::initWithElement(
    std::shared_ptr<XMLWrapperElement> element, SharedBytes schema, ErrorOut /*error*/) {
  auto doc = std::make_shared<XMLWrapperDoc>(Making());
  doc->startWithElement(std::move(element), std::move(schema));
  return doc;
}

bool XMLWrapperDoc::startWithData(SharedBytes data, SharedBytes schema, ErrorOut error) {
  xmlData_ = std::move(data);
  schemaData_ = std::move(schema);
  query_ = std::make_shared<XMLWrapperQuery>();
  if (!createDocument(error)) return false;
  documentElement_ = createDocumentElement(error);
  return documentElement_ != nullptr;
}

void XMLWrapperDoc::startWithElement(std::shared_ptr<XMLWrapperElement> element,
                                     SharedBytes schema) {
  schemaData_ = std::move(schema);
  documentElement_ = std::move(element);
}

bool XMLWrapperDoc::createDocument(ErrorOut error) {
  if (!setXMLDoc(error)) return false;
  if (!schemaData_) return true;
  const std::unique_ptr<XMLWrapperSchema> schema =
      XMLWrapperSchema::initWithSchemaData(schemaData_);
  if (!schema) {
    storeSchemaError(error, kSchemaContextFailure);
    return false;
  }
  return schema->validateDocument(doc_.get(), error);
}

bool XMLWrapperDoc::setXMLDoc(ErrorOut error) {
  docNode_ = nullptr;
  doc_ = xmlData_ ? boundedParse(*xmlData_) : nullptr;
  if (!doc_) storeError(error, kXMLWrapperErrorDomain, kXMLWrapperErrorNoTree);
  return doc_ != nullptr;
}

std::shared_ptr<XMLWrapperElement> XMLWrapperDoc::createDocumentElement(ErrorOut /*error*/) {
  docNode_ = xmlDocGetRootElement(doc_.get());
  if (docNode_ == nullptr) return nullptr;
  TreeReader reader(doc_, query_);
  std::shared_ptr<XMLWrapperElement> root = reader.read(docNode_);
  if (query_) bindXPathPrefixes(reader.prefixes());
  return root;
}

SharedXmlDoc XMLWrapperDoc::docNode(ErrorOut error) const {
  static const std::string kVersion = "2.0";
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  XmlDocOwner doc(xmlNewDoc(xmlTextOf(kVersion)));
  SharedXmlDoc built;
  if (doc && documentElement_) {
    built = DetachedNode::intoDocument(documentElement_->xmlNode(error), std::move(doc));
    route.throwIfOutOfMemory();
  }
  if (!built) storeError(error, kXMLWrapperErrorDomain, kXMLWrapperErrorNotWritten);
  return built;
}

std::optional<std::string> XMLWrapperDoc::xmlString(ErrorOut error) const {
  std::optional<std::string> text;
  if (documentElement_) text = documentElement_->xmlString(error);
  if (!text) storeError(error, kXMLWrapperErrorDomain, kXMLWrapperErrorNotWritten);
  return text;
}

void XMLWrapperDoc::setNamespace(const XMLWrapperNamespace& ns) {
  if (query_) query_->registerNamespace(ns);
}

const NamespaceMap* XMLWrapperDoc::namespaces() const { return nullptr; }

std::optional<XMLWrapperElement::List> XMLWrapperDoc::getResultsByXpathQuery(std::string_view xpath,
                                                                             ErrorOut error) const {
  if (!query_) return std::nullopt;
  return query_->searchNodeWithXpathQuery({doc_, docNode_}, xpath, error);
}

std::shared_ptr<XMLWrapperElement> XMLWrapperDoc::firstResultByXpathQuery(std::string_view xpath,
                                                                          ErrorOut error) const {
  const auto results = getResultsByXpathQuery(xpath, error);
  return results && !results->empty() ? results->front() : nullptr;
}

const SharedBytes& XMLWrapperDoc::xmlData() const { return xmlData_; }
void XMLWrapperDoc::setXmlData(SharedBytes data) { xmlData_ = std::move(data); }
const SharedBytes& XMLWrapperDoc::schemaData() const { return schemaData_; }
void XMLWrapperDoc::setSchemaData(SharedBytes data) { schemaData_ = std::move(data); }
const std::shared_ptr<XMLWrapperElement>& XMLWrapperDoc::documentElement() const {
  return documentElement_;
}
void XMLWrapperDoc::setDocumentElement(std::shared_ptr<XMLWrapperElement> element) {
  documentElement_ = std::move(element);
}
const std::shared_ptr<XMLWrapperQuery>& XMLWrapperDoc::query() const { return query_; }
void XMLWrapperDoc::setQuery(std::shared_ptr<XMLWrapperQuery> query) { query_ = std::move(query); }

_xmlDoc* XMLWrapperDoc::docPtr() const { return doc_.get(); }
_xmlNode* XMLWrapperDoc::nodePtr() const { return docNode_; }

}  // namespace kestrelink
