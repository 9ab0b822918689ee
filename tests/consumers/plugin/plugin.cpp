// A plugin that reads a response.

#include <kestrelink/saml/KestrelinkSAML.h>

extern "C" bool readsValidated(const char* message) {
  const auto& controller = kestrelink::SAMLParserController::sharedInstance();
  return controller.schema() && controller.parseResponse(message);
}
