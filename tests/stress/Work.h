// What both stress tests let the library do.
#pragma once

#include <string>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace stress {

/// "none", and the error when there is one.
std::string none(const std::optional<kestrelink::ErrorInfo>& error);

/// A response as it is read and as it is written; `none` for null.
std::string textOf(const std::shared_ptr<kestrelink::SAMLResponse>& response,
                   const std::optional<kestrelink::ErrorInfo>& error);

/// The four requests, filled in, with the subject of the response, and as they are each time:
/// without their identifiers and dates. `none` when one cannot be written.
std::string requests(const std::string& response);

}  // namespace stress
