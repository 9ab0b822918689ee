#include "kestrelink/xml/XMLWrapperElementFactory.h"

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include <libxml/tree.h>

#include "kestrelink/platform/NoDestructor.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {
namespace {

struct Hash : std::hash<std::string_view> {
  using is_transparent = void;
};

struct Registry {
  std::mutex lock;
  std::unordered_map<std::string, const XMLWrapperElementClass*, Hash, std::equal_to<>> classes;
};

Registry& registry() {
  static auto& instance = noDestructor<Registry>();
  return instance;
}

void store(const XMLWrapperElementClass& elementClass, std::string_view name) {
  Registry& all = registry();
  const std::lock_guard guard(all.lock);
  all.classes.insert_or_assign(std::string(name), &elementClass);
}

}  // namespace

XMLWrapperElementFactory::XMLWrapperElementFactory() {
  store(plainElementClass(), kXMLWrapperDefaultElementKey);
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
  Registry& all = registry();
  const std::lock_guard guard(all.lock);
  const auto found = all.classes.find(tagName);
  return found == all.classes.end() ? nullptr : found->second;
}

unsigned XMLWrapperElementFactory::elementTypeByTagName(std::string_view /*tagName*/) { return 0; }

const XMLWrapperElementClass& XMLWrapperElementFactory::classForXMLNode(const xmlNode* node) const {
  const XMLWrapperElementClass* const registered = elementClassByTagName(viewOf(node->name));
  if (registered != nullptr) return *registered;
  Registry& all = registry();
  const std::lock_guard guard(all.lock);
  return *all.classes.find(kXMLWrapperDefaultElementKey)->second;
}

}  // namespace kestrelink
