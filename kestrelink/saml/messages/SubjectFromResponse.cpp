#include "kestrelink/saml/messages/SubjectFromResponse.h"

#include "kestrelink/platform/Text.h"
#include "kestrelink/saml/messages/SAMLResponse.h"

namespace kestrelink {

std::shared_ptr<SAMLSubject> subjectFromResponse(std::string_view response,
                                                 const SharedBytes& schema) {
  if (!isUtf8(response)) return nullptr;
  const auto read =
      SAMLResponse::initWithData(std::make_shared<const std::string>(response), schema);
  return read ? read->subject() : nullptr;
}

}  // namespace kestrelink
