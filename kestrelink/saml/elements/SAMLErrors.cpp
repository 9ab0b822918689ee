#include "kestrelink/saml/elements/SAMLErrors.h"

namespace kestrelink {

constinit const std::string_view SAMLParserErrorDomain = "SAMLParserErrorDomain";
constinit const std::string_view SAMLParserDetailedErrorsKey = "SAMLParserDetailedErrorsKey";

}  // namespace kestrelink
