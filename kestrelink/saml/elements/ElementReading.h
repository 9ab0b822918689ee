// What the element classes read from elements that are not of a class of their own.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/xml/XMLWrapperElement.h"

namespace kestrelink {

/// The texts of those elements that have one.
std::vector<std::string> textsOf(const XMLWrapperElement::List& elements);

/// The text of an element that may be null.
std::optional<std::string> textOf(const std::shared_ptr<XMLWrapperElement>& element);

/// The value of an attribute of an element that may be null.
std::optional<std::string> attributeOf(const std::shared_ptr<XMLWrapperElement>& element,
                                       std::string_view name);

/// The algorithms of the "Transform" elements in the first "Transforms" of an element.
std::vector<std::string> transformsOf(const XMLWrapperElement& element);

}  // namespace kestrelink
