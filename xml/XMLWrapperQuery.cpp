#include "kestrelink/xml/XMLWrapperQuery.h"

#include <map>
#include <mutex>
#include <string>

#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include "kestrelink/xml/LibxmlErrorRoute.h"
#include "kestrelink/xml/LibxmlSetup.h"
#include "kestrelink/xml/LibxmlText.h"
#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/XMLWrapperElement.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/XMLWrapperNamespace.h"

namespace kestrelink {
namespace {

struct NamespaceTable {
  using Bindings = std::map<std::string, std::optional<std::string>>;

  void store(const std::string& prefix, const std::optional<std::string>& href) {
    const std::lock_guard guard(lock);
    bindings.insert_or_assign(prefix, href);
  }

  Bindings copy() {
    const std::lock_guard guard(lock);
    return bindings;
  }

  std::mutex lock;
  Bindings bindings;
};

NamespaceTable& namespaceTable() {
  static NamespaceTable table;
  return table;
}

}  // namespace

void XMLWrapperQuery::registerNamespace(const XMLWrapperNamespace& ns) {
  const std::optional<std::string>& prefix = ns.prefix();
  if (prefix && !prefix->empty()) namespaceTable().store(*prefix, ns.href());
}

bool XMLWrapperQuery::registerXpathNamespacesForCtx(xmlXPathContext* context) const {
  bool allRegistered = true;
  for (const auto& [prefix, href] : namespaceTable().copy()) {
    if (xmlXPathRegisterNs(context, xmlTextOf(prefix), xmlTextOf(href)) != 0) allRegistered = false;
  }
  return allRegistered;
}

std::optional<XMLWrapperQuery::Results> XMLWrapperQuery::executeXpathQuery(
    const XmlNodeRef& context, std::string_view xpath, ErrorOut error) {
  const auto failed = [error](std::int64_t code) {
    storeError(error, kXMLWrapperErrorDomain, code);
    return std::nullopt;
  };
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  const XmlXPathContextOwner evaluation(xmlXPathNewContext(context.doc.get()));
  if (!evaluation) return failed(201);
  if (context.node != nullptr && xmlXPathSetContextNode(context.node, evaluation.get()) != 0) {
    return failed(201);
  }
  if (!registerXpathNamespacesForCtx(evaluation.get())) return failed(201);

  const std::string expression(xpath);
  const bool cutOff = expression.find('\0') != std::string::npos;
  const XmlXPathObjectOwner result(
      cutOff ? nullptr : xmlXPathEvalExpression(xmlTextOf(expression), evaluation.get()));
  if (!result) return failed(300);
  const xmlNodeSet* const nodes = result->type == XPATH_NODESET ? result->nodesetval : nullptr;
  if (nodes == nullptr) return failed(301);

  Results elements;
  for (int index = 0; index < nodes->nodeNr; ++index) {
    xmlNode* const node = nodes->nodeTab[index];
    if (node->type == XML_NAMESPACE_DECL) continue;
    const auto& elementClass = XMLWrapperElementFactory::sharedInstance().classForXMLNode(node);
    elements.push_back(
        XMLWrapperElement::initWithNode(elementClass, {context.doc, node}, shared_from_this()));
  }
  return elements;
}

std::optional<XMLWrapperQuery::Results> XMLWrapperQuery::searchNodeWithXpathQuery(
    const XmlNodeRef& node, std::string_view xpath, ErrorOut error) {
  if (!node.doc || node.node == nullptr) return std::nullopt;
  return executeXpathQuery(node, xpath, error);
}

std::shared_ptr<XMLWrapperElement> XMLWrapperQuery::elementForNode(const XmlNodeRef& node) {
  if (node.node == nullptr || node.node->type != XML_ELEMENT_NODE) return nullptr;
  const auto& elementClass = XMLWrapperElementFactory::sharedInstance().classForXMLNode(node.node);
  return XMLWrapperElement::initWithNode(elementClass, node, shared_from_this());
}

}  // namespace kestrelink
