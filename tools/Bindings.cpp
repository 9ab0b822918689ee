#include "Bindings.h"

#include <algorithm>
#include <cstdio>

#include "Base64Text.h"
#include "Deflate.h"
#include "Table.h"

namespace ksaml {
namespace {

constexpr std::string_view kBlank = " \t\r\n";

std::string_view withoutBlank(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  text.remove_prefix(std::min(text.find_first_not_of(kBlank), text.size()));
  return text;
}

bool isXml(std::string_view text) { return withoutBlank(text).starts_with('<'); }

int hexDigit(char character) {
  constexpr std::string_view kLower = "0123456789abcdef";
  constexpr std::string_view kUpper = "0123456789ABCDEF";
  const std::size_t value = std::min(kLower.find(character), kUpper.find(character));
  return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

// A "+" stays: base64 has it, and no blanks that it could stand for.
std::string percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isEscape = text[at] == '%' && at + 2 < text.size() && hexDigit(text[at + 1]) >= 0 &&
                          hexDigit(text[at + 2]) >= 0;
    decoded += isEscape ? static_cast<char>(hexDigit(text[at + 1]) * 16 + hexDigit(text[at + 2]))
                        : text[at];
    if (isEscape) at += 2;
  }
  return decoded;
}

std::string percentEncoded(std::string_view text) {
  std::string encoded;
  for (const char character : text) {
    const bool isPlain = (character >= 'a' && character <= 'z') ||
                         (character >= 'A' && character <= 'Z') ||
                         (character >= '0' && character <= '9');
    if (isPlain) {
      encoded += character;
      continue;
    }
    char escaped[4];
    std::snprintf(escaped, sizeof escaped, "%%%02X",
                  static_cast<unsigned>(static_cast<unsigned char>(character)));
    encoded += escaped;
  }
  return encoded;
}

// The value of the message's parameter in a form, a query or a URL.
std::optional<std::string> messageParameter(std::string_view text) {
  text = withoutBlank(text);
  text = text.substr(0, text.find('#'));
  if (const std::size_t query = text.find('?'); query != std::string_view::npos) {
    text.remove_prefix(query + 1);
  }
  for (;;) {
    const std::size_t end = std::min(text.find('&'), text.size());
    const std::string_view parameter = text.substr(0, end);
    for (const std::string_view name : {"SAMLResponse=", "SAMLRequest="}) {
      if (parameter.starts_with(name)) return percentDecoded(parameter.substr(name.size()));
    }
    if (end == text.size()) return std::nullopt;
    text.remove_prefix(end + 1);
  }
}

std::nullopt_t refuse(const std::string& file, const char* reason) {
  std::fprintf(stderr, "ksaml: %s %s\n", printable(file).c_str(), reason);
  return std::nullopt;
}

}  // namespace

std::optional<std::string> messageIn(const std::string& text, bool isBase64,
                                     const std::string& file) {
  if (!isBase64 && isXml(text)) return text;
  const std::optional<std::string> parameter = isBase64 ? std::nullopt : messageParameter(text);
  std::optional<std::string> message = fromBase64(parameter.value_or(text));
  if (!message) {
    if (!isBase64 && !parameter) return text;
    return refuse(file, parameter ? "holds a parameter that is not base64" : "is not base64");
  }
  if (isXml(*message)) return message;
  std::optional<Inflated> result = inflated(*message);
  if (result && result->tooLong) return refuse(file, "inflates to more than 8 MB");
  if (result && isXml(result->text)) return std::move(result->text);
  // Without the option and a parameter the text may only look like base64, as a single word does.
  return isBase64 || parameter ? message : text;
}

std::string redirectUrl(const std::string& url, std::string_view request) {
  const std::size_t fragment = std::min(url.find('#'), url.size());
  const std::string base = url.substr(0, fragment);
  return base + (base.find('?') == std::string::npos ? "?" : "&") +
         "SAMLRequest=" + percentEncoded(toBase64(deflated(request))) + url.substr(fragment);
}

std::string inSoapEnvelope(const std::string& message) {
  return "<soap:Envelope xmlns:soap=\"" + std::string(kSoapNamespace) + "\">\n<soap:Body>\n" +
         message + "\n</soap:Body>\n</soap:Envelope>";
}

}  // namespace ksaml
