#include "kestrelink/signin/Reading.h"

#include <optional>
#include <utility>

#include "kestrelink/saml/SAMLParserController.h"
#include "kestrelink/signin/Incoming.h"
#include "kestrelink/signin/LibraryForm.h"
#include "kestrelink/signin/Trusted.h"
#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {
namespace {

std::string descriptionOf(const std::optional<ErrorInfo>& error) {
  if (!error) return {};
  const auto description = error->info.find(std::string(kLocalizedDescriptionKey));
  return description == error->info.end() ? "" : ": " + quoted(description->second);
}

}  // namespace

std::shared_ptr<SAMLResponse> readResponse(std::string text) {
  const auto& schema = SAMLParserController::sharedInstance().schema();
  require(schema != nullptr, Reason::schemaMissing,
          "the schema files are missing, so nothing can be validated");
  std::optional<ErrorInfo> error;
  auto response = SAMLResponse::initWithData(std::make_shared<const std::string>(std::move(text)),
                                             schema, &error);
  if (response && response->responseElement()) return response;
  refuse(Reason::notValid,
         "the message is not valid against the SAML 2.0 protocol schema" + descriptionOf(error));
}

Reading readMessage(std::string_view received, const char* root, const Client& client,
                    const Provider& provider, const Policy& policy, SAMLDate now) {
  const Received message = unpacked(received, policy);
  const Owned<xmlDoc> document = parsed(message.xml, policy.mostBytes);
  const xmlNode* const element = messageIn(document.get());
  if (!is(element, kProtocol, root)) {
    refuse(Reason::wrongMessage,
           "the message is " + quoted(textOf(element->name)) + ", not a SAML " + root);
  }
  Reading reading{envelopeOf(element), false, message.relayState, {}, nullptr};
  const Trusted believed = trusted(message, document.get(), client, provider, policy);
  reading.isSigned = believed.isSigned;
  reading.text = inLibraryForm(believed.document.get(), policy, now);
  QuietLibxml::throwIfOutOfMemory();
  reading.response = readResponse(reading.text);
  return reading;
}

}  // namespace kestrelink::signin
