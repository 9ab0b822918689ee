#include <libxml/tree.h>

#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/xml/libxml/DetachedNode.h"

#include "tests/fuzz/Targets.h"
#include "tests/support/ElementTable.h"

namespace fuzz {
namespace {

using namespace kestrelink;

constexpr std::size_t kMostBytes = 4000;  // the work grows with elements times depth times classes

/// Calls the operations that take a text, if the element is of that class.
template <class Element, class... Operations>
void tell(XMLWrapperElement& element, std::string_view text, Operations... operations) {
  if (auto* const typed = dynamic_cast<Element*>(&element)) {
    (static_cast<void>((typed->*operations)(text)), ...);
  }
}

void tellAll(XMLWrapperElement& e, std::string_view text) {
  tell<SAMLAttribute>(e, text, &SAMLAttribute::setName, &SAMLAttribute::addAttributeValue);
  tell<SAMLAdvice>(e, text, &SAMLAdvice::setAssertionIDRef, &SAMLAdvice::setAssertionURIRef);
  tell<SAMLScoping>(e, text, &SAMLScoping::addRequesterId);
  using Logout = SAMLLogoutRequestElement;
  tell<Logout>(e, text, &Logout::setIssuer, &Logout::setSessionIndex);
}

void walk(const XmlNodeRef& ref, const std::shared_ptr<XMLWrapperQuery>& query,
          std::string_view text) {
  for (const kestrelink::testing::ElementRow& row : kestrelink::testing::elementTable()) {
    const auto element = XMLWrapperElement::initWithNode(*row.elementClass, ref, query);
    require(&element->dynamicClass() == row.elementClass, "an element knows its class");
    row.read(*element);
    tellAll(*element, text);
    row.read(*element);
    static_cast<void>(element->xmlString());
  }
  for (xmlNode* child = ref.node->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) walk({ref.doc, child}, query, text);
  }
}

}  // namespace

void everyAccessor(std::string_view input) {
  registerSAMLElementClasses();
  if (input.size() > kMostBytes) return;
  const auto doc = XMLWrapperDoc::initWithData(std::make_shared<const std::string>(input), nullptr);
  if (!doc) return;
  const std::shared_ptr<_xmlDoc> borrowed(doc, doc->docPtr());
  walk({borrowed, doc->nodePtr()}, doc->query(), input.substr(input.size() / 2, 40));
}

}  // namespace fuzz
