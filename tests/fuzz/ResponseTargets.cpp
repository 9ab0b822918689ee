#include <set>

#include <libxml/parser.h>

#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"

#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using kestrelink::SAMLParserController;
using kestrelink::SAMLResponse;

// What is read by hand, and no attribute more.
void compare(const SAMLResponse& response, std::string_view input) {
  const kestrelink::LibxmlErrorRoute quiet(kestrelink::LibxmlErrorRoute::During::parsing);
  const kestrelink::XmlDocOwner tree(
      xmlReadMemory(input.data(), static_cast<int>(input.size()), "", nullptr, XML_PARSE_RECOVER));
  require(tree != nullptr, "a message that was read has a tree");
  const std::set<std::string> compared = {"issuer", "subject", "session index", "session end",
                                          "status"};
  Reading reading = readingOf(response);
  std::erase_if(reading, [&](const auto& each) {
    return !compared.contains(each.first) && !each.first.starts_with("attribute ");
  });
  require(reading == readingByHand(tree.get()), "what was read is what the tree has");
}

void read(const SAMLParserController& controller, std::string_view input) {
  std::optional<kestrelink::ErrorInfo> error;
  const auto cached = controller.parseCachedResponse(input, &error);
  if (!cached) return;
  const auto current = controller.parseResponse(input, &error);
  require(current != nullptr || !cached->assertionMeetsConditions(),
          "only its time window keeps a valid message from being accepted");
  compare(*cached, input);
}

}  // namespace

void responseWithSchema(std::string_view input) {
  static const SAMLParserController& controller = SAMLParserController::sharedInstance();
  require(controller.schema() != nullptr, "the schema is there");
  read(controller, input);
}

void responseWithoutSchema(std::string_view input) { read(withoutSchema(), input); }

}  // namespace fuzz
