#include <libxml/parser.h>

#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"

#include "tests/fuzz/Answers.h"
#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using kestrelink::SAMLParserController;
using kestrelink::SAMLResponse;

void compare(const SAMLResponse& response, std::string_view input) {
  const kestrelink::LibxmlErrorRoute quiet(kestrelink::LibxmlErrorRoute::During::parsing);
  const kestrelink::XmlDocOwner tree(
      xmlReadMemory(input.data(), static_cast<int>(input.size()), "", nullptr, XML_PARSE_RECOVER));
  require(tree != nullptr, "a message that was read has a tree");
  require(answersOf(response) == answersByHand(tree.get()), "the answers are those of the tree");
}

// The questions whose answers have no counterpart in the comparison.
void askTheRest(const SAMLResponse& response) {
  std::optional<kestrelink::ErrorInfo> error;
  static_cast<void>(response.assertionMeetsConditions(&error));
  static_cast<void>(response.hasValidAuthentication());
  static_cast<void>(response.authorizationStatusForResource("https://tv.example/play"));
  const auto names = response.attributes();
  const auto user = names.find("username");
  const bool named = user != names.end() && !user->second.empty();
  require(response.userName() == (named ? std::optional(user->second.front()) : std::nullopt),
          "the user name is the attribute's first value");
  const auto codes = response.statusCodes();
  require(response.primaryStatusCode().has_value() == !codes.empty(), "the first code is primary");
  require(response.isValid() || !response.assertions()->empty(),
          "only assertions make a response invalid");
}

void read(const SAMLParserController& controller, std::string_view input) {
  std::optional<kestrelink::ErrorInfo> error;
  const auto cached = controller.parseCachedResponse(input, &error);
  if (!cached) return;
  const auto current = controller.parseResponse(input, &error);
  require(current != nullptr || !cached->assertionMeetsConditions(),
          "only its time window keeps a valid message from being accepted");
  compare(*cached, input);
  askTheRest(*cached);
}

}  // namespace

void responseWithSchema(std::string_view input) {
  static const SAMLParserController& controller = SAMLParserController::sharedInstance();
  require(controller.schema() != nullptr, "the schema is there");
  read(controller, input);
}

void responseWithoutSchema(std::string_view input) { read(withoutSchema(), input); }

}  // namespace fuzz
