#include <functional>

#include <libxml/parser.h>

#include "kestrelink/platform/Text.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using namespace kestrelink;

struct Input {
  std::string_view first, second, third, response;
};

Input split(std::string_view text) {
  const auto next = [&text] {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
  };
  Input input;
  for (auto* const line : {&input.first, &input.second, &input.third}) *line = next();
  input.response = text;
  return input;
}

// A text ends at its first NUL when libxml2 takes it.
std::string_view untilNul(std::string_view text) { return text.substr(0, text.find('\0')); }

// What comes back when a text is written and read: in an attribute all of it, ...
std::string asAttribute(std::string_view text) {
  return replacementFor(untilNul(text)).value_or(std::string(untilNul(text)));
}

// ... between tags without the blanks around it.
std::optional<std::string> asText(std::string_view text) {
  const std::string written = asAttribute(text);
  const std::string_view kept = trimmed(written);
  return kept.empty() ? std::nullopt : std::optional<std::string>(kept);
}

template <class Request>
std::shared_ptr<Request> writtenAndRead(const Request& request) {
  std::optional<ErrorInfo> error;
  const std::optional<std::string> text = request.xmlString(&error);
  require(text.has_value(), "a request is written");
  const LibxmlErrorRoute quiet(LibxmlErrorRoute::During::parsing);
  const XmlDocOwner strict(
      xmlReadMemory(text->data(), static_cast<int>(text->size()), "", nullptr, XML_PARSE_NONET));
  require(strict != nullptr, "a request is well-formed");
  require(request.xmlString() == text, "a request is written the same twice");
  auto read = Request::initWithData(std::make_shared<const std::string>(*text), nullptr);
  require(read && read->requestElement(), "a request can be read");
  return read;
}

void authn(const Input& input) {
  const auto request = withoutSchema().newAuthNRequest(untilNul(input.first));
  request->setProviderName(untilNul(input.second));
  request->setIsPassive(input.first.size() % 2 == 0);
  request->setForceAuthN(input.second.size() % 2 == 0);
  request->requestElement()->setDestination(input.third);
  request->setSubjectFromResponse(input.response);
  const auto read = writtenAndRead(*request);
  require(read->issuer() == asText(input.first), "the issuer comes back");
  const auto written = read->requestElement()->attributeWithName("ProviderID");
  require(written && written->value() == asAttribute(input.second), "the provider too");
}

void attributes(const Input& input) {
  const auto request = withoutSchema().newAttributeQuery(untilNul(input.first));
  const std::string_view name = untilNul(input.second);
  request->setSubjectFromResponse(input.response);
  request->addAttribute(name);
  request->addAttribute(name, {std::string(input.first), std::string(input.third)});
  const auto read = writtenAndRead(*request);
  require(read->channelId() == asText(input.first), "the channel comes back");
  const auto asked = read->requestElement()->samlAttributes();
  require(asked.size() == 2, "both attributes come back");
  require(asked.front()->name() == asAttribute(name), "with their name");
}

void authz(const Input& input) {
  const auto request = withoutSchema().newAuthZQuery(input.first, untilNul(input.second));
  request->addAction(input.third);
  request->setSubjectFromResponse(input.response);
  const auto read = writtenAndRead(*request);
  require(read->requestElement()->actions().size() == 1, "the action comes back");
  require(read->requestElement()->channelId() == asText(input.second), "the channel comes back");
}

void logout(const Input& input) {
  const auto request = withoutSchema().newLogoutRequest();
  const std::string_view reason = untilNul(input.second);
  request->setIssuer(untilNul(input.first));
  request->setReason(reason);
  request->requestElement()->setSessionIndex(input.third);
  request->setNotOnOrAfter(SAMLDate(std::chrono::sys_seconds(
      std::chrono::seconds(static_cast<std::int64_t>(std::hash<std::string_view>()(reason))))));
  const auto read = writtenAndRead(*request);
  require(read->issuer() == asText(input.first), "the issuer comes back");
  require(read->reason() == asAttribute(reason), "the reason comes back");
}

}  // namespace

void requests(std::string_view input) {
  for (const auto make : {authn, attributes, authz, logout}) make(split(input));
}

}  // namespace fuzz
