#pragma once

#include <memory>
#include <string_view>

#include "kestrelink/platform/SharedBytes.h"
#include "kestrelink/saml/elements/SAMLSubject.h"

namespace kestrelink {

/// The subject of a response given as XML text; null when the text yields none. The response is
/// validated unless `schema` is null; its time window and authentication are not checked.
std::shared_ptr<SAMLSubject> subjectFromResponse(std::string_view response,
                                                 const SharedBytes& schema);

}  // namespace kestrelink
