#pragma once

#include <memory>

#include "kestrelink/xml/LibxmlHandles.h"
#include "kestrelink/xml/NamespaceRecords.h"
#include "kestrelink/xml/XMLWrapperElement.h"

namespace kestrelink {

/// One walk over a parse tree: what all the elements it makes have in common.
struct XMLTreeReading {
  std::shared_ptr<XMLWrapperElement> read(const XMLWrapperElementClass& elementClass,
                                          _xmlNode* node);

  std::weak_ptr<_xmlDoc> tree;
  std::shared_ptr<XMLWrapperQuery> query;
  NamespaceRecords namespaces;
};

}  // namespace kestrelink
