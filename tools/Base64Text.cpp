#include "Base64Text.h"

#include <resolv.h>

namespace ksaml {

std::optional<std::string> fromBase64(std::string_view formValue) {
  // `b64_pton` stops at a NUL, and needs space for one group more than it decodes.
  if (formValue.find('\0') != std::string_view::npos) return std::nullopt;
  std::string text(formValue.size() / 4 * 3 + 3, '\0');
  const int length = b64_pton(std::string(formValue).c_str(),
                              reinterpret_cast<unsigned char*>(text.data()), text.size());
  if (length < 0) return std::nullopt;
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::string toBase64(std::string_view text) {
  std::string formValue((text.size() + 2) / 3 * 4 + 1, '\0');  // `b64_ntop` ends it with a NUL
  b64_ntop(reinterpret_cast<const unsigned char*>(text.data()), text.size(), formValue.data(),
           formValue.size());
  formValue.pop_back();
  return formValue;
}

}  // namespace ksaml
