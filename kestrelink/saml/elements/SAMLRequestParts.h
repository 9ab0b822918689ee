// What the four requests have in common.
#pragma once

#include <string_view>

#include "kestrelink/xml/XMLWrapperElement.h"

namespace kestrelink {

/// Sets "ID" to the prefix and a fresh UUID, "Version" to "2.0" and "IssueInstant" to now, in this
/// order.
void stampRequest(XMLWrapperElement& request, std::string_view identifierPrefix);

/// Makes an "Issuer" with that text the request's issuer: in the place of the first there is, or
/// else before the first child.
void setIssuerOf(XMLWrapperElement& request, std::string_view issuer);

/// Puts the element, unless it is null, in the place of the first child of that name, or else at
/// the end.
void replaceOrAdd(XMLWrapperElement& request, std::string_view tagName,
                  const std::shared_ptr<XMLWrapperElement>& element);

}  // namespace kestrelink
