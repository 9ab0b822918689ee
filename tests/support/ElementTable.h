// All element classes: how each is made and what is read from it. Golden files are printed from
// this table, and the fuzz target everyAccessor walks it.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "kestrelink/xml/ErrorInfo.h"
#include "kestrelink/xml/XMLWrapperElement.h"

namespace kestrelink::testing {

struct ElementRow {
  const XMLWrapperElementClass* elementClass;
  /// Null for a class without a maker of its own.
  std::shared_ptr<XMLWrapperElement> (*make)(ErrorOut error);
  /// " name=value" for each getter of an element of this class.
  std::string (*read)(const XMLWrapperElement& element);
};

std::span<const ElementRow> elementTable();

}  // namespace kestrelink::testing
