#include "kestrelink/xml/XMLWrapperQuery.h"

#include <string>

#include <libxml/tree.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/TreeReader.h"
#include "kestrelink/xml/XMLWrapperElement.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/XPathPrefixes.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {
namespace {

// From an entity reference libxml2 walks into the document type declaration and from there back to
// the document, so that an axis such as `following` would never end.
void limitWalks(xmlXPathContext& evaluation) {
  constexpr unsigned long kMostSteps = 1'000'000;
  if (evaluation.doc != nullptr && evaluation.doc->intSubset != nullptr) {
    evaluation.opLimit = kMostSteps;
  }
}

}  // namespace

void XMLWrapperQuery::registerNamespace(const XMLWrapperNamespace& ns) { bindXPathPrefixes({&ns}); }

bool XMLWrapperQuery::registerXpathNamespacesForCtx(xmlXPathContext* context,
                                                    std::string_view xpath) const {
  bool allRegistered = true;
  for (const auto& [prefix, href] : xpathBindingsFor(xpath)) {
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
  if (!evaluation) return failed(kXMLWrapperErrorXPathNotPrepared);
  if (context.node != nullptr && xmlXPathSetContextNode(context.node, evaluation.get()) != 0) {
    return failed(kXMLWrapperErrorXPathNotPrepared);
  }
  if (!registerXpathNamespacesForCtx(evaluation.get(), xpath) || route.outOfMemory()) {
    return failed(kXMLWrapperErrorXPathNotPrepared);
  }

  limitWalks(*evaluation);
  const std::string expression(xpath);
  const bool cutOff = expression.find('\0') != std::string::npos;
  const XmlXPathObjectOwner result(
      cutOff ? nullptr : xmlXPathEvalExpression(xmlTextOf(expression), evaluation.get()));
  if (!result || route.outOfMemory()) return failed(kXMLWrapperErrorXPathNotEvaluated);
  const xmlNodeSet* const nodes = result->type == XPATH_NODESET ? result->nodesetval : nullptr;
  if (nodes == nullptr) return failed(kXMLWrapperErrorXPathNoNodeSet);

  Results elements;
  TreeReader reader(context.doc, shared_from_this());
  for (int index = 0; index < nodes->nodeNr; ++index) {
    xmlNode* const node = nodes->nodeTab[index];
    if (node->type != XML_NAMESPACE_DECL) elements.push_back(reader.read(node));
  }
  bindXPathPrefixes(reader.prefixes());
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

// Operations of elements

std::optional<XMLWrapperElement::List> XMLWrapperElement::getResultsByXpathQuery(
    std::string_view xpath) const {
  XmlNodeRef context = nodeRead();
  const bool madeInMemory = changes_ && changes_->madeAs;
  if (!query() || (!context.doc && !madeInMemory)) return std::nullopt;
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  XmlNodeOwner empty;
  if (!context.doc) {
    // libxml2 dereferences a null pointer for a node without a document.
    context.doc = SharedXmlDoc(XmlDocOwner(xmlNewDoc(nullptr)));
    empty.reset(xmlNewDocNode(context.doc.get(), nullptr, xmlTextOf(*changes_->madeAs), nullptr));
    context.node = empty.get();
    route.throwIfOutOfMemory();
  }
  std::optional<ErrorInfo> error;
  std::optional<List> results = query()->executeXpathQuery(context, xpath, &error);
  if (!results && error) logDiagnostic(error->domain + " " + std::to_string(error->code));
  return results;
}

std::shared_ptr<XMLWrapperElement> XMLWrapperElement::firstResultByXpathQuery(
    std::string_view xpath) const {
  const std::optional<List> results = getResultsByXpathQuery(xpath);
  return results && !results->empty() ? results->front() : nullptr;
}

}  // namespace kestrelink
