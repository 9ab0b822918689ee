#include "kestrelink/signin/XmlTree.h"

#include <algorithm>
#include <memory>

#include <libxml/parser.h>

#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink::signin {
namespace {

struct ReleaseParser {
  void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};

// Called before anything of the declaration is read.
void stopAtDocumentType(void* context, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                        const xmlChar* /*systemId*/) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  *static_cast<bool*>(parser->_private) = true;
  xmlStopParser(parser);
}

// The first library refuses what would take libxml2 time or memory out of proportion.
bool isWithinBounds(std::string_view xml) {
  return XMLWrapperDoc::initWithData(std::make_shared<const std::string>(xml), nullptr) != nullptr;
}

Owned<xmlDoc> strictlyParsed(std::string_view xml) {
  const std::unique_ptr<xmlParserCtxt, ReleaseParser> parser(xmlNewParserCtxt());
  if (!parser) throw std::bad_alloc();
  bool hasDocumentType = false;
  parser->_private = &hasDocumentType;
  parser->sax->internalSubset = &stopAtDocumentType;
  // Without XML_PARSE_NOENT and XML_PARSE_RECOVER.
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  Owned<xmlDoc> document(xmlCtxtReadMemory(parser.get(), xml.data(), static_cast<int>(xml.size()),
                                           "", nullptr, kOptions));
  require(!hasDocumentType, Reason::documentType, "the text has a document type declaration");
  require(document && xmlDocGetRootElement(document.get()) != nullptr, Reason::notXml,
          "the text is not well-formed XML");
  return document;
}

}  // namespace

std::string textOf(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string();
}

std::string attribute(const xmlNode* element, const char* name) {
  return textOf(Owned<xmlChar>(xmlGetNoNsProp(element, xmlText(name))).get());
}

bool hasAttribute(const xmlNode* element, const char* name) {
  return xmlHasNsProp(element, xmlText(name), nullptr) != nullptr;
}

std::string contentOf(const xmlNode* element) {
  const std::string text = textOf(Owned<xmlChar>(xmlNodeGetContent(element)).get());
  constexpr const char* kBlank = " \t\r\n";
  const std::size_t first = std::min(text.find_first_not_of(kBlank), text.size());
  return text.substr(first, text.find_last_not_of(kBlank) + 1 - first);
}

bool is(const xmlNode* element, const char* space, const char* name) {
  return element->type == XML_ELEMENT_NODE && element->ns != nullptr &&
         xmlStrEqual(element->ns->href, xmlText(space)) != 0 &&
         xmlStrEqual(element->name, xmlText(name)) != 0;
}

std::vector<xmlNode*> children(const xmlNode* parent, const char* space, const char* name) {
  std::vector<xmlNode*> found;
  for (xmlNode* child = parent->children; child != nullptr; child = child->next) {
    if (is(child, space, name)) found.push_back(child);
  }
  return found;
}

xmlNode* firstChild(const xmlNode* parent, const char* space, const char* name) {
  const auto found = children(parent, space, name);
  return found.empty() ? nullptr : found.front();
}

Owned<xmlDoc> parsed(std::string_view xml, std::size_t mostBytes) {
  requireLength(xml, mostBytes);
  require(isWithinBounds(xml), Reason::notXml,
          "the text is not XML, or would take too much time or memory");
  return strictlyParsed(xml);
}

Owned<xmlDoc> reparsed(const std::string& xml) { return strictlyParsed(xml); }

std::string written(xmlDoc* document) {
  xmlChar* dumped = nullptr;
  int length = 0;
  xmlDocDumpMemoryEnc(document, &dumped, &length, "UTF-8");
  const Owned<xmlChar> owned(dumped);
  if (!owned) throw std::bad_alloc();
  return {reinterpret_cast<const char*>(dumped), static_cast<std::size_t>(length)};
}

}  // namespace kestrelink::signin
