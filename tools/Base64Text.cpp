#include "Base64Text.h"

#include <cstdint>

#include <nettle/base64.h>

namespace ksaml {

std::optional<std::string> fromBase64(std::string_view formValue) {
  base64_decode_ctx context;
  base64_decode_init(&context);
  // nettle computes six times the length, which 32 bits may not hold.
  if (formValue.size() > SIZE_MAX / 6 - 1) return std::nullopt;
  std::string text(BASE64_DECODE_LENGTH(formValue.size()), '\0');
  std::size_t length = text.size();
  auto* const bytes = reinterpret_cast<std::uint8_t*>(text.data());
  if (base64_decode_update(&context, &length, bytes, formValue.size(), formValue.data()) == 0 ||
      base64_decode_final(&context) == 0) {
    return std::nullopt;
  }
  text.resize(length);
  return text;
}

std::string toBase64(std::string_view text) {
  std::string formValue(BASE64_ENCODE_RAW_LENGTH(text.size()), '\0');
  base64_encode_raw(formValue.data(), text.size(),
                    reinterpret_cast<const std::uint8_t*>(text.data()));
  return formValue;
}

}  // namespace ksaml
