// A plugin that reads an answer.

#include <kestrelink/saml/KestrelinkSAML.h>

extern "C" bool readsValidated(const char* answer) {
  const auto& controller = kestrelink::SAMLParserController::sharedInstance();
  return controller.schema() && controller.parseResponse(answer);
}
