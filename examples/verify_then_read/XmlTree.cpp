#include "XmlTree.h"

#include <stdexcept>

#include <libxml/parser.h>

namespace verify_then_read {

void require(bool condition, const char* reason) {
  if (!condition) throw std::runtime_error(reason);
}

std::string text(const Owned<xmlChar>& value) {
  return value ? reinterpret_cast<const char*>(value.get()) : std::string();
}

std::string attribute(const xmlNode* element, const char* name) {
  return text(Owned<xmlChar>(xmlGetNoNsProp(element, xmlText(name))));
}

bool is(const xmlNode* element, const char* space, const char* name) {
  return element->ns != nullptr && xmlStrEqual(element->ns->href, xmlText(space)) != 0 &&
         xmlStrEqual(element->name, xmlText(name)) != 0;
}

std::vector<xmlNode*> children(xmlNode* parent, const char* space, const char* name) {
  std::vector<xmlNode*> found;
  for (xmlNode* child = xmlFirstElementChild(parent); child != nullptr;
       child = xmlNextElementSibling(child)) {
    if (is(child, space, name)) found.push_back(child);
  }
  return found;
}

xmlNode* onlyChild(xmlNode* parent, const char* space, const char* name, const char* reason) {
  const auto found = children(parent, space, name);
  require(found.size() == 1, reason);
  return found.front();
}

Owned<xmlDoc> parsed(std::string_view xml) {
  // Without XML_PARSE_NOENT and XML_PARSE_RECOVER.
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  // Real responses have a tenth of it. What libxml2 does for a hostile one grows with the square.
  constexpr std::size_t kLongest = 262144;
  require(xml.size() <= kLongest, "the response is too long");
  Owned<xmlDoc> document(
      xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", nullptr, kOptions));
  require(document && xmlDocGetRootElement(document.get()), "the response is not well-formed XML");
  require(xmlGetIntSubset(document.get()) == nullptr, "the response has a document type");
  return document;
}

std::string written(xmlDoc* document) {
  xmlChar* dumped = nullptr;
  int length = 0;
  xmlDocDumpMemoryEnc(document, &dumped, &length, "UTF-8");
  const Owned<xmlChar> owned(dumped);
  require(owned != nullptr, "the signed text cannot be written");
  return text(owned);
}

}  // namespace verify_then_read
