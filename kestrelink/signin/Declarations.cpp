#include "kestrelink/signin/Declarations.h"

#include <new>

#include <libxml/c14n.h>

namespace kestrelink::signin {
namespace {

void requireSame(bool condition) {
  require(condition, Reason::signatureForm,
          "the signed text differs from the message it was made from");
}

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
    requireSame(child != nullptr && xmlStrEqual(from->name, child->name) != 0);
    for (const xmlNs* each = from->nsDef; each != nullptr; each = each->next) putBack(each, child);
    putBackBelow(from, signature, child);
    child = xmlNextElementSibling(child);
  }
  requireSame(child == nullptr);
}

// Names with their namespaces, attributes and values; declarations only where a name needs them.
std::string canonical(xmlDoc* document) {
  xmlChar* made = nullptr;
  xmlC14NDocDumpMemory(document, nullptr, XML_C14N_EXCLUSIVE_1_0, nullptr, 1, &made);
  const Owned<xmlChar> owned(made);
  requireSame(owned != nullptr);
  return textOf(owned.get());
}

}  // namespace

Owned<xmlDoc> withDeclarations(const std::string& signedXml, xmlNode* original,
                               const xmlNode* signature) {
  const Owned<xmlDoc> document = reparsed(signedXml);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  const std::string before = canonical(document.get());
  putBackInScope(original, root);
  putBackBelow(original, signature, root);
  Owned<xmlDoc> result = reparsed(written(document.get()));
  requireSame(canonical(result.get()) == before);
  return result;
}

}  // namespace kestrelink::signin
