#include "Declarations.h"

#include <libxml/c14n.h>

#include "XmlTree.h"

namespace verify_then_read {
namespace {

constexpr const char* kDiffers = "the signed text differs from the response it was made from";

void putBack(const xmlNs* declaration, xmlNode* element) {
  xmlNewNs(element, declaration->href,
           declaration->prefix);  // null if the prefix is declared there
}

void putBackInScope(const xmlNode* original, xmlNode* element) {
  const Owned<xmlNs*> inScope(xmlGetNsList(original->doc, original));
  for (xmlNs** each = inScope.get(); each != nullptr && *each != nullptr; ++each) {
    putBack(*each, element);
  }
}

// Both trees in step.
void putBackBelow(xmlNode* original, const xmlNode* signature, xmlNode* element) {
  xmlNode* child = xmlFirstElementChild(element);
  for (xmlNode* from = xmlFirstElementChild(original); from != nullptr;
       from = xmlNextElementSibling(from)) {
    if (from == signature) continue;
    require(child != nullptr && xmlStrEqual(from->name, child->name) != 0, kDiffers);
    for (const xmlNs* each = from->nsDef; each != nullptr; each = each->next) putBack(each, child);
    putBackBelow(from, signature, child);
    child = xmlNextElementSibling(child);
  }
  require(child == nullptr, kDiffers);
}

// Names with their namespaces, attributes and values; declarations only where a name needs them.
std::string canonical(const std::string& xml) {
  xmlChar* made = nullptr;
  xmlC14NDocDumpMemory(parsed(xml).get(), nullptr, XML_C14N_EXCLUSIVE_1_0, nullptr, 1, &made);
  const Owned<xmlChar> owned(made);
  require(owned != nullptr, "the signed text has no canonical form");
  return text(owned);
}

}  // namespace

std::string withDeclarations(const std::string& signedXml, xmlNode* original,
                             const xmlNode* signature) {
  const Owned<xmlDoc> document = parsed(signedXml);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  putBackInScope(original, root);
  putBackBelow(original, signature, root);
  std::string result = written(document.get());
  require(canonical(result) == canonical(signedXml), kDiffers);
  return result;
}

}  // namespace verify_then_read
