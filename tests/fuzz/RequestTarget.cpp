#include <functional>

#include <libxml/parser.h>

#include "kestrelink/platform/Text.h"
#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/saml/elements/SAMLAttributeQueryElement.h"
#include "kestrelink/saml/elements/SAMLAuthNRequestElement.h"
#include "kestrelink/saml/elements/SAMLAuthZDecisionQueryElement.h"
#include "kestrelink/saml/elements/SAMLLogoutRequestElement.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using namespace kestrelink;

class Fields {
 public:
  explicit Fields(std::string_view input) : rest_(input) {}
  std::string_view next() {
    const std::string_view field = rest_.substr(0, rest_.find('\n'));
    rest_.remove_prefix(std::min(field.size() + 1, rest_.size()));
    return field;
  }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

// What comes back when a text is written and read: in an attribute all of it, ...
std::string asAttribute(std::string_view text) {
  return replacementFor(text).value_or(std::string(text));
}

// ... between tags without the blanks around it.
std::optional<std::string> asText(std::string_view text) {
  const std::string written = replacementFor(text).value_or(std::string(text));
  const std::string_view kept = trimmed(written);
  return kept.empty() ? std::nullopt : std::optional<std::string>(kept);
}

// A text ends at its first NUL when libxml2 takes it.
std::string_view untilNul(std::string_view text) { return text.substr(0, text.find('\0')); }

template <class Request>
std::shared_ptr<Request> writtenAndRead(const XMLWrapperDoc& request) {
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

void authn(const SAMLParserController& controller, Fields fields) {
  const std::string_view issuer = untilNul(fields.next()), provider = untilNul(fields.next());
  const auto request = controller.newAuthNRequest(issuer);
  request->setProviderName(provider);
  request->setIsPassive(issuer.size() % 2 == 0);
  request->setForceAuthN(provider.size() % 2 == 0);
  request->requestElement()->setDestination(fields.next());
  request->setSubjectFromResponse(fields.rest());
  const auto read = writtenAndRead<SAMLAuthNRequest>(*request);
  require(read->issuer() == asText(issuer), "the issuer comes back");
  const auto written = read->requestElement()->attributeWithName("ProviderID");
  require(written && written->value() == asAttribute(provider), "the provider too");
}

void attributes(const SAMLParserController& controller, Fields fields) {
  const std::string_view channel = untilNul(fields.next()), name = untilNul(fields.next());
  const auto request = controller.newAttributeQuery(channel);
  request->setSubjectFromResponse(fields.rest());
  request->addAttribute(name);
  request->addAttribute(name, {std::string(channel), std::string(fields.next())});
  const auto read = writtenAndRead<SAMLAttributeQuery>(*request);
  require(read->channelId() == asText(channel), "the channel comes back");
  const auto asked = read->requestElement()->samlAttributes();
  require(asked.size() == 2, "both attributes come back");
  require(asked.front()->name() == asAttribute(name), "with their name");
}

void authz(const SAMLParserController& controller, Fields fields) {
  const std::string_view resource = fields.next(), channel = untilNul(fields.next());
  const auto request = controller.newAuthZQuery(resource, channel);
  request->addAction(fields.next());
  request->setSubjectFromResponse(fields.rest());
  const auto read = writtenAndRead<SAMLAuthZDecisionQuery>(*request);
  require(read->requestElement()->actions().size() == 1, "the action comes back");
  require(read->requestElement()->channelId() == asText(channel), "the channel comes back");
}

void logout(const SAMLParserController& controller, Fields fields) {
  const std::string_view issuer = untilNul(fields.next()), reason = untilNul(fields.next());
  const auto request = controller.newLogoutRequest();
  request->setIssuer(issuer);
  request->setReason(reason);
  request->requestElement()->setSessionIndex(fields.next());
  request->setNotOnOrAfter(SAMLDate(std::chrono::sys_seconds(
      std::chrono::seconds(static_cast<std::int64_t>(std::hash<std::string_view>()(reason))))));
  const auto read = writtenAndRead<SAMLLogoutRequest>(*request);
  require(read->issuer() == asText(issuer), "the issuer comes back");
  require(read->reason() == asAttribute(reason), "the reason comes back");
}

}  // namespace

void requests(std::string_view input) {
  for (const auto make : {authn, attributes, authz, logout}) make(withoutSchema(), Fields(input));
}

}  // namespace fuzz
