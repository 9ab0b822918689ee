#include "kestrelink/signin/Bindings.h"

#include <algorithm>
#include <array>
#include <utility>

#include "kestrelink/signin/Encoding.h"
#include "kestrelink/signin/Incoming.h"
#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {
namespace {

constexpr const char* kDeflate = "urn:oasis:names:tc:SAML:2.0:bindings:URL-Encoding:DEFLATE";

// The parameters of a form or a query that mean something here.
enum Name : std::size_t { kResponse, kRequest, kEncoding, kRelayState, kSigAlg, kSignatureValue };
constexpr std::array<std::string_view, 6> kNames = {"SAMLResponse", "SAMLRequest", "SAMLEncoding",
                                                    "RelayState",   "SigAlg",      "Signature"};
// Their values as they came.
using Parameters = std::array<std::optional<std::string_view>, kNames.size()>;

[[noreturn]] void refuseParameter(Name name, const std::string& problem) {
  refuse(Reason::notDecodable, "the parameter " + std::string(kNames[name]) + " " + problem);
}

std::string_view withoutBlank(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

// A URL up to its query has a mark that the first name of a form has not.
std::string_view queryOf(std::string_view text) {
  text = text.substr(0, text.find('#'));
  const std::size_t mark = std::min(text.find_first_of(":/?=&"), text.size());
  const std::size_t query = text.find('?', mark);
  const bool isUrl = query != std::string_view::npos && text[mark] != '=' && text[mark] != '&';
  return isUrl ? text.substr(query + 1) : text;
}

void take(std::string_view parameter, Parameters& parameters) {
  const std::size_t equals = std::min(parameter.find('='), parameter.size());
  const auto text = fromUrlText(parameter.substr(0, equals));
  const auto* const name = std::find(kNames.begin(), kNames.end(), text.value_or(""));
  if (name == kNames.end()) return;
  const auto index = static_cast<std::size_t>(name - kNames.begin());
  if (parameters[index]) refuseParameter(static_cast<Name>(index), "appears twice");
  parameters[index] = parameter.substr(std::min(equals + 1, parameter.size()));
}

Parameters parametersOf(std::string_view query) {
  Parameters parameters;
  for (;;) {
    const std::size_t end = query.find('&');
    take(query.substr(0, end), parameters);
    if (end == std::string_view::npos) return parameters;
    query.remove_prefix(end + 1);
  }
}

// A "+" stays: base64 has it, many forget to escape it, and no blank that it could stand for.
std::string valueOf(const Parameters& parameters, Name name) {
  auto value = fromUrlText(parameters[name].value_or(""));
  if (!value) refuseParameter(name, "has a malformed escape");
  return std::move(*value);
}

std::string bytesOf(const Parameters& parameters, Name name) {
  auto bytes = fromBase64(valueOf(parameters, name));
  if (!bytes || bytes->empty()) refuseParameter(name, "is not base64");
  return std::move(*bytes);
}

std::string relayStateOf(const Parameters& parameters) {
  std::string value(parameters[kRelayState].value_or(""));
  std::replace(value.begin(), value.end(), '+', ' ');
  auto text = fromUrlText(value);
  if (!text) refuseParameter(kRelayState, "has a malformed escape");
  return std::move(*text);
}

// SAML 2.0 bindings, section 3.4.4.1.
std::optional<UrlSignature> signatureOf(const Parameters& parameters, Name message) {
  if (!parameters[kSigAlg] && !parameters[kSignatureValue]) return std::nullopt;
  for (const Name name : {kSigAlg, kSignatureValue}) {
    if (!parameters[name]) refuseParameter(name, "is missing");
  }
  std::string octets;
  for (const Name name : {message, kRelayState, kSigAlg}) {
    if (!parameters[name]) continue;
    octets += octets.empty() ? "" : "&";
    octets.append(kNames[name]).append("=").append(*parameters[name]);
  }
  return UrlSignature{std::move(octets), valueOf(parameters, kSigAlg),
                      bytesOf(parameters, kSignatureValue)};
}

bool isXml(std::string_view text) { return withoutBlank(text).starts_with('<'); }

// The message in bytes that were base64.
std::optional<std::string> messageFrom(std::string bytes, const Policy& policy) {
  if (isXml(bytes)) return bytes;
  auto text = inflated(bytes, policy.mostBytes);
  return text && isXml(*text) ? text : std::nullopt;
}

Received messageFrom(const Parameters& parameters, const Policy& policy) {
  if (parameters[kResponse] && parameters[kRequest]) {
    refuseParameter(kRequest, "is one message too many");
  }
  const Name name = parameters[kResponse] ? kResponse : kRequest;
  const std::string encoding = valueOf(parameters, kEncoding);
  if (parameters[kEncoding] && encoding != kDeflate) {
    refuseParameter(kEncoding, "names an unknown encoding: " + quoted(encoding));
  }
  std::string bytes = bytesOf(parameters, name);
  const bool isDeflated = !isXml(bytes);
  auto xml = messageFrom(std::move(bytes), policy);
  if (!xml) refuseParameter(name, "is neither XML nor deflated XML");
  // A form whose message is not deflated is not signed in this way.
  return {std::move(*xml), relayStateOf(parameters),
          isDeflated ? signatureOf(parameters, name) : std::nullopt};
}

}  // namespace

Received unpacked(std::string_view received, const Policy& policy) {
  requireLength(received, policy.mostBytes);
  const std::string_view text = withoutBlank(received);
  if (text.starts_with('<')) return {std::string(text), {}, {}};
  const Parameters parameters = parametersOf(queryOf(text));
  if (parameters[kResponse] || parameters[kRequest]) return messageFrom(parameters, policy);
  auto bytes = fromBase64(text);
  auto xml = bytes ? messageFrom(std::move(*bytes), policy) : std::nullopt;
  require(xml.has_value(), Reason::notDecodable,
          "there is no message: neither XML, nor base64 of XML, nor a form or query with it");
  return {std::move(*xml), {}, {}};
}

std::optional<Received> decode(std::string_view received, std::string& reason,
                               const Policy& policy) {
  try {
    return unpacked(received, policy);
  } catch (const Refusal& refusal) {
    reason = refusal.what();
    return std::nullopt;
  }
}

}  // namespace kestrelink::signin
