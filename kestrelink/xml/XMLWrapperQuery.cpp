#include "kestrelink/xml/XMLWrapperQuery.h"

#include <map>
#include <mutex>
#include <string>

#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include "kestrelink/platform/NoDestructor.h"
#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/XMLTreeReading.h"
#include "kestrelink/xml/XMLWrapperElement.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/XMLWrapperNamespace.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {
namespace {

// The longest name at the end of the text, without trailing blanks.
std::string_view nameBefore(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  constexpr std::string_view kDelimiters = " \t\r\n()[]@,|+=!<>*/$'\":";
  text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
  return text.substr(text.find_last_of(kDelimiters) + 1);  // npos + 1 is 0
}

struct NamespaceTable {
  using Bindings = std::map<std::string, std::optional<std::string>, std::less<>>;

  void store(const std::string& prefix, const std::optional<std::string>& href) {
    const std::lock_guard guard(lock);
    bindings.insert_or_assign(prefix, href);
  }

  // Copies only the bindings that the expression can use: the table holds every prefix read so far.
  Bindings copyFor(std::string_view xpath) {
    const std::lock_guard guard(lock);
    Bindings copy;
    for (std::size_t colon = xpath.find(':'); colon != std::string_view::npos;
         colon = xpath.find(':', colon + 1)) {
      std::string_view name = nameBefore(xpath.substr(0, colon));
      // In "5-p:n", "a div-p:n" and "orp:n" the prefix may be only the end of the name.
      for (; !name.empty(); name.remove_prefix(1)) {
        if (const auto found = bindings.find(name); found != bindings.end()) copy.insert(*found);
      }
    }
    return copy;
  }

  std::mutex lock;
  Bindings bindings;
};

NamespaceTable& namespaceTable() {
  static auto& table = noDestructor<NamespaceTable>();
  return table;
}

}  // namespace

void XMLWrapperQuery::registerNamespace(const XMLWrapperNamespace& ns) {
  const std::optional<std::string>& prefix = ns.prefix();
  if (prefix && !prefix->empty()) namespaceTable().store(*prefix, ns.href());
}

bool XMLWrapperQuery::registerXpathNamespacesForCtx(xmlXPathContext* context,
                                                    std::string_view xpath) const {
  bool allRegistered = true;
  for (const auto& [prefix, href] : namespaceTable().copyFor(xpath)) {
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

  const std::string expression(xpath);
  const bool cutOff = expression.find('\0') != std::string::npos;
  const XmlXPathObjectOwner result(
      cutOff ? nullptr : xmlXPathEvalExpression(xmlTextOf(expression), evaluation.get()));
  if (!result || route.outOfMemory()) return failed(kXMLWrapperErrorXPathNotEvaluated);
  const xmlNodeSet* const nodes = result->type == XPATH_NODESET ? result->nodesetval : nullptr;
  if (nodes == nullptr) return failed(kXMLWrapperErrorXPathNoNodeSet);

  Results elements;
  const auto reading = std::make_shared<XMLTreeReading>(context.doc, shared_from_this());
  for (int index = 0; index < nodes->nodeNr; ++index) {
    xmlNode* const node = nodes->nodeTab[index];
    if (node->type == XML_NAMESPACE_DECL) continue;
    elements.push_back(reading->read(*reading->nameOf(*node).elementClass, node));
  }
  reading->namespaces.registerWith(*this);
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
