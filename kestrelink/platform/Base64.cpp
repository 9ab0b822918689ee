#include "kestrelink/platform/Base64.h"

#include <resolv.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace kestrelink {
namespace {

bool isInAlphabet(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
         (byte >= '0' && byte <= '9') || byte == '+' || byte == '/' || byte == '=';
}

}  // namespace

std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text) {
  std::string encoded;
  encoded.reserve(text.size());
  std::copy_if(text.begin(), text.end(), std::back_inserter(encoded), isInAlphabet);

  // `b64_pton` needs space for one group more than it decodes.
  std::vector<std::uint8_t> bytes(encoded.size() / 4 * 3 + 3);
  const int length = b64_pton(encoded.c_str(), bytes.data(), bytes.size());
  if (length < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

}  // namespace kestrelink
