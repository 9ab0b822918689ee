// Reading and making elements that have no class of their own.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLBaseElement.h"

namespace kestrelink {

/// The texts of those elements that have one.
std::vector<std::string> textsOf(const XMLWrapperElement::List& elements);

/// The text of an element that may be null.
std::optional<std::string> textOf(const std::shared_ptr<XMLWrapperElement>& element);

/// The text of the first child of that name, of an element that may be null.
std::optional<std::string> childTextOf(const std::shared_ptr<XMLWrapperElement>& element,
                                       std::string_view tagName);

/// The number in a decimal text, and the bytes in a base64 text; `std::nullopt` for no text and for
/// text that does not parse.
std::optional<double> numberOf(const std::optional<std::string>& text);
std::optional<Bytes> bytesOf(const std::optional<std::string>& text);

/// A new element that holds that text.
std::shared_ptr<XMLWrapperElement> textElement(std::string_view tagName, std::string_view text,
                                               const NamespaceMap& namespaces = {});

/// The value of an attribute of an element that may be null.
std::optional<std::string> attributeOf(const std::shared_ptr<XMLWrapperElement>& element,
                                       std::string_view name);

/// The algorithms of the "Transform" elements in the first "Transforms" of an element.
std::vector<std::string> transformsOf(const XMLWrapperElement& element);

}  // namespace kestrelink
