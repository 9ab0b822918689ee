#include <cstdio>
#include <cstdlib>

#include "kestrelink/saml/KestrelinkSAML.h"

#include "bench/Work.h"

namespace bench {
namespace {

using kestrelink::SAMLParserController;

const SAMLParserController& controllerFor(std::string_view work) {
  if (work != "read-no-schema") return SAMLParserController::sharedInstance();
  static SAMLParserController withoutSchema;
  withoutSchema.setSchemaData(nullptr);
  return withoutSchema;
}

}  // namespace

std::size_t libraryWork(std::string_view work, const std::string& message) {
  if (work == "request") {
    return SAMLParserController::sharedInstance()
        .newAuthNRequest("https://signin.harbour-tv.example")
        ->xmlString()
        ->size();
  }
  const auto response = controllerFor(work).parseResponse(message);
  if (!response) {
    std::fputs("library: the message is rejected\n", stderr);
    std::exit(1);
  }
  return response->selectedProvider()->size() + response->primaryStatusCode()->size() +
         static_cast<std::size_t>(response->authenticationTTL()->seconds().time_since_epoch() >
                                  std::chrono::seconds(0)) +
         response->attributes().size();
}

}  // namespace bench
