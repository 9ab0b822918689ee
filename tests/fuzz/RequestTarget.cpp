#include <array>
#include <functional>

#include <libxml/parser.h>

#include "kestrelink/platform/Text.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using namespace kestrelink;

// Three lines and the rest.
std::array<std::string_view, 4> split(std::string_view text) {
  std::array<std::string_view, 4> parts;
  for (std::string_view& part : parts) {
    part = &part == &parts.back() ? text : text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
  }
  return parts;
}

// What comes back when a text is written and read: in an attribute all of it, ...
std::string asAttribute(std::string_view text) {
  return replacementFor(text).value_or(std::string(text));
}

// ... between tags without the blanks around it.
std::optional<std::string> asText(std::string_view text) {
  const std::string written = asAttribute(text);
  const std::string_view kept = trimmed(written);
  return kept.empty() ? std::nullopt : std::optional<std::string>(kept);
}

template <class Request>
void check(const Request& request, std::string_view issuer, const char* name,
           std::string_view value) {
  const std::optional<std::string> text = request.xmlString();
  require(text && request.xmlString() == text, "a request is written, and the same twice");
  const LibxmlErrorRoute quiet(LibxmlErrorRoute::During::parsing);
  const XmlDocOwner strict(
      xmlReadMemory(text->data(), static_cast<int>(text->size()), "", nullptr, XML_PARSE_NONET));
  require(strict != nullptr, "a request is well-formed");
  const auto read = Request::initWithData(std::make_shared<const std::string>(*text), nullptr);
  require(read && read->requestElement(), "a request can be read");
  const auto sender = read->requestElement()->firstElementByTagName("Issuer");
  require(sender && sender->textContent() == asText(issuer), "the issuer comes back");
  const auto attribute = read->requestElement()->attributeWithName(name);
  require(attribute && attribute->value() == asAttribute(value), "an attribute comes back");
}

}  // namespace

void requests(std::string_view input) {
  const auto [first, second, third, response] = split(input);
  const SAMLParserController& controller = withoutSchema();

  const auto authn = controller.newAuthNRequest(first);
  authn->setProviderName(second);
  authn->setIsPassive(first.size() % 2 == 0);
  authn->requestElement()->setDestination(third);
  authn->setSubjectFromResponse(response);
  check(*authn, first, "ProviderID", second);

  const auto attributes = controller.newAttributeQuery(second);
  attributes->setSubjectFromResponse(response);
  attributes->addAttribute(third, {std::string(first), std::string(third)});
  check(*attributes, second, "Version", "2.0");

  const auto authz = controller.newAuthZQuery("urn:r", third);
  authz->addAction(first);
  authz->setSubjectFromResponse(response);
  check(*authz, third, "Resource", "urn:r");

  const auto logout = controller.newLogoutRequest();
  logout->setIssuer(first);
  logout->setReason(second);
  logout->requestElement()->setSessionIndex(third);
  const auto any = static_cast<std::int64_t>(std::hash<std::string_view>()(second));
  logout->setNotOnOrAfter(SAMLDate(std::chrono::sys_seconds(std::chrono::seconds(any))));
  check(*logout, first, "Reason", second);
}

}  // namespace fuzz
