#include "Reading.h"

namespace ksaml {

using kestrelink::SAMLResponse;

Reading readMessage(kestrelink::SAMLParserController& controller, std::string_view text,
                    const ReadOptions& options) {
  if (options.noSchema) controller.setSchemaData(nullptr);
  Reading reading;
  reading.validated = controller.schema() != nullptr;
  reading.response = options.cached ? controller.parseCachedResponse(text, &reading.error)
                                    : controller.parseResponse(text, &reading.error);
  reading.accepted = reading.response != nullptr;
  if (reading.accepted) {
    reading.error.reset();
  } else if (auto bytes = controller.dataFromString(text)) {
    reading.response = SAMLResponse::initWithData(std::move(bytes), controller.schema());
  }
  return reading;
}

std::shared_ptr<kestrelink::XMLWrapperElement> nameIdentifierOf(
    const kestrelink::SAMLSubject& subject) {
  if (auto nameId = subject.nameId()) return nameId;
  return subject.firstElementByTagName("NameID");
}

std::optional<std::string> attributeText(const kestrelink::XMLWrapperElement& element,
                                         std::string_view name) {
  const auto attribute = element.attributeWithName(name);
  return attribute ? attribute->value() : std::nullopt;
}

}  // namespace ksaml
