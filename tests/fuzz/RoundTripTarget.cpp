#include "kestrelink/platform/Text.h"
#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using namespace kestrelink;

std::shared_ptr<XMLWrapperDoc> read(std::string_view text) {
  return XMLWrapperDoc::initWithData(std::make_shared<const std::string>(text), nullptr);
}

// These leave out of what they write what does not belong.
bool writesLess(const XMLWrapperElement& element) {
  return dynamic_cast<const SAMLSubjectConfirmation*>(&element) != nullptr ||
         dynamic_cast<const SAMLSignedInfo*>(&element) != nullptr;
}

// The text as it is written: new versions of libxml2 read characters that XML forbids.
std::string asWritten(const std::optional<std::string>& text) {
  return replacementFor(text.value_or("")).value_or(text.value_or(""));
}

// An element declares its own namespaces alone: the prefix of an attribute may be unknown in what
// is written, and is then read as a part of the name.
std::shared_ptr<XMLWrapperAttribute> sameAttribute(const XMLWrapperAttribute& attribute,
                                                   const XMLWrapperElement& element) {
  auto found = element.attributeWithName(attribute.name());
  if (found || !attribute.ns() || !attribute.ns()->prefix()) return found;
  return element.attributeWithName(*attribute.ns()->prefix() + ":" + attribute.name());
}

void compareAttributes(const XMLWrapperElement& before, const XMLWrapperElement& after) {
  for (const auto& [name, attribute] : before.attributes()) {
    const auto again = sameAttribute(*attribute, after);
    // A value that is null, as one that begins with an entity, is written empty.
    require(again && again->value().value_or("") == asWritten(attribute->value()),
            "an attribute is written and read");
  }
  require(before.attributes().size() == after.attributes().size(), "no attribute is added");
}

void compare(const XMLWrapperElement& before, const XMLWrapperElement& after) {
  require(before.tagName() == after.tagName(), "the tag name is the same");
  require(asWritten(before.textContent()) == after.textContent().value_or(""),
          "the text is the same");
  compareAttributes(before, after);
  if (writesLess(before)) return;
  auto again = after.elements().begin();
  for (const auto& child : before.elements()) {
    if (!child->xmlString()) continue;
    require(again != after.elements().end(), "a child that can be written is written");
    compare(*child, **again);
    ++again;
  }
  require(again == after.elements().end(), "no child is added");
}

}  // namespace

void roundTrip(std::string_view input) {
  registerSAMLElementClasses();
  if (!isUtf8(input)) return;  // recovery keeps names that cannot be written
  const auto doc = read(input);
  if (!doc) return;
  std::optional<ErrorInfo> error;
  const std::optional<std::string> text = doc->xmlString(&error);
  if (!text) {
    require(error.has_value(), "what cannot be written says so");
    return;
  }
  const auto again = read(*text);
  require(again != nullptr, "what is written can be read");
  compare(*doc->documentElement(), *again->documentElement());
}

}  // namespace fuzz
