#include "kestrelink/platform/Base64.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>

#include <nettle/base64.h>

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
  if (encoded.ends_with("===")) return std::nullopt;  // nettle accepts it

  base64_decode_ctx context;
  base64_decode_init(&context);
  // nettle computes six times the length, which 32 bits may not hold.
  if (encoded.size() > SIZE_MAX / 6 - 1) return std::nullopt;
  std::vector<std::uint8_t> bytes(BASE64_DECODE_LENGTH(encoded.size()));
  std::size_t length = bytes.size();
  if (base64_decode_update(&context, &length, bytes.data(), encoded.size(), encoded.data()) == 0 ||
      base64_decode_final(&context) == 0) {
    return std::nullopt;
  }
  bytes.resize(length);
  return bytes;
}

}  // namespace kestrelink
