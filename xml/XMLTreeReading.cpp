#include "kestrelink/xml/XMLTreeReading.h"

namespace kestrelink {

std::shared_ptr<XMLWrapperElement> XMLTreeReading::read(const XMLWrapperElementClass& elementClass,
                                                        _xmlNode* node) {
  std::shared_ptr<XMLWrapperElement> element = elementClass.makeInstance();
  element->readNode(node, *this);
  return element;
}

}  // namespace kestrelink
