#include "kestrelink/xml/XMLTreeReading.h"

#include <libxml/tree.h>

#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {

std::shared_ptr<XMLWrapperElement> XMLTreeReading::read(const XMLWrapperElementClass& elementClass,
                                                        _xmlNode* node) {
  std::shared_ptr<XMLWrapperElement> element = elementClass.makeInstance();
  element->readNode(node, *this);
  return element;
}

const XMLTreeReading::Name& XMLTreeReading::nameOf(const xmlNode& node) {
  const auto known = names_.find(node.name);
  if (known != names_.end()) return known->second;
  const auto& factory = XMLWrapperElementFactory::sharedInstance();
  return names_.emplace(node.name, Name{textOf(node.name), &factory.classForXMLNode(&node)})
      .first->second;
}

std::shared_ptr<XMLWrapperAttribute> XMLTreeReading::newAttribute() {
  if (attributesUsed_ == kAttributesAtOnce) {
    attributes_ = std::make_shared<XMLWrapperAttribute[]>(kAttributesAtOnce);
    attributesUsed_ = 0;
  }
  return {attributes_, attributes_.get() + attributesUsed_++};
}

}  // namespace kestrelink
