// Shared by the four requests.
#pragma once

#include <string_view>

#include "kestrelink/xml/XMLWrapperElement.h"

namespace kestrelink {

/// Sets "ID" to the prefix and a new UUID, "Version" to "2.0" and "IssueInstant" to the current
/// time, in this order.
void stampRequest(XMLWrapperElement& request, std::string_view identifierPrefix);

/// Sets an "Issuer" with that text: replaces the first one, or else is inserted before the first
/// child.
void setIssuerOf(XMLWrapperElement& request, std::string_view issuer);

/// Replaces the first child of that name by the element, or else appends it. Null is ignored.
void replaceOrAdd(XMLWrapperElement& request, std::string_view tagName,
                  const std::shared_ptr<XMLWrapperElement>& element);

}  // namespace kestrelink
