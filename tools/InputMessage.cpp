#include "InputMessage.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

#include "kestrelink/signin/Bindings.h"

#include "InputFile.h"
#include "Table.h"

namespace ksaml {
namespace {

// More than any message needs, less than what a small input can inflate to.
constexpr std::size_t kMostInflated = std::size_t{8} << 20;

bool isXml(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && text[first] == '<';
}

// A form, a URL or base64, malformed or not.
bool isCarrier(const std::string& text) {
  constexpr const char* kBase64 =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= \t\r\n";
  return text.find("SAMLResponse=") != std::string::npos ||
         text.find("SAMLRequest=") != std::string::npos ||
         (!text.empty() && text.find_first_not_of(kBase64) == std::string::npos);
}

}  // namespace

std::optional<std::string> messageIn(const std::string& text, bool isBase64,
                                     const std::string& file) {
  if (!isBase64 && isXml(text)) return text;
  kestrelink::signin::Policy policy;
  policy.mostBytes = std::max(text.size(), kMostInflated);
  std::string reason = "it is not base64";
  auto message = isXml(text) ? std::nullopt : kestrelink::signin::decode(text, reason, policy);
  if (message) return std::move(message->xml);
  if (!isBase64 && !isCarrier(text)) return text;
  std::fprintf(stderr, "ksaml: %s: %s\n", printable(file).c_str(), printable(reason).c_str());
  return std::nullopt;
}

std::optional<std::string> messageInFile(const std::string& file, bool isBase64) {
  const auto text = readInput(file);
  return text ? messageIn(*text, isBase64, file) : std::nullopt;
}

}  // namespace ksaml
