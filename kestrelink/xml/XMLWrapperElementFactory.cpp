#include "kestrelink/xml/XMLWrapperElementFactory.h"

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include <libxml/tree.h>

#include "kestrelink/xml/XMLWrapperElement.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {
namespace {

// Entries are only ever added, in front of their chain, and live as long as the process: a reader
// needs no lock, and may still read while the process ends.
struct Entry {
  Entry(std::string_view tagName, const XMLWrapperElementClass& registered, Entry* rest)
      : name(tagName), elementClass(&registered), next(rest) {}

  const std::string name;
  std::atomic<const XMLWrapperElementClass*> elementClass;
  Entry* const next;
};

constinit std::array<std::atomic<Entry*>, 64> chains{};
constinit std::mutex writers;

std::atomic<Entry*>& chainOf(std::string_view name) {
  return chains[std::hash<std::string_view>()(name) % chains.size()];
}

Entry* find(std::string_view name) {
  Entry* entry = chainOf(name).load(std::memory_order_acquire);
  while (entry != nullptr && entry->name != name) entry = entry->next;
  return entry;
}

void store(const XMLWrapperElementClass& elementClass, std::string_view name) {
  const std::lock_guard lock(writers);
  if (Entry* known = find(name)) {
    known->elementClass.store(&elementClass, std::memory_order_release);
    return;
  }
  std::atomic<Entry*>& chain = chainOf(name);
  auto entry = std::make_unique<Entry>(name, elementClass, chain.load());
  chain.store(entry.release(), std::memory_order_release);
}

}  // namespace

XMLWrapperElementFactory::XMLWrapperElementFactory() {
  store(XMLWrapperElement::elementClass, kXMLWrapperDefaultElementKey);
}

XMLWrapperElementFactory& XMLWrapperElementFactory::sharedInstance() {
  static XMLWrapperElementFactory factory;
  return factory;
}

void XMLWrapperElementFactory::registerClass(const XMLWrapperElementClass* elementClass,
                                             std::string_view forElementName) {
  sharedInstance();
  if (elementClass != nullptr && !forElementName.empty()) store(*elementClass, forElementName);
}

const XMLWrapperElementClass* XMLWrapperElementFactory::elementClassByTagName(
    std::string_view tagName) {
  sharedInstance();
  const Entry* const entry = find(tagName);
  return entry == nullptr ? nullptr : entry->elementClass.load(std::memory_order_acquire);
}

unsigned XMLWrapperElementFactory::elementTypeByTagName(std::string_view /*tagName*/) { return 0; }

const XMLWrapperElementClass& XMLWrapperElementFactory::classForXMLNode(const xmlNode* node) const {
  for (const std::string_view name : {viewOf(node->name), kXMLWrapperDefaultElementKey}) {
    if (const XMLWrapperElementClass* registered = elementClassByTagName(name)) return *registered;
  }
  return XMLWrapperElement::elementClass;
}

}  // namespace kestrelink
