#include "kestrelink/platform/Decimal.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace kestrelink {

std::optional<double> parseDecimal(std::string_view text) {
  // from_chars also accepts "inf" and "nan".
  constexpr std::string_view kDecimalCharacters = "-.0123456789";
  if (text.find_first_not_of(kDecimalCharacters) != std::string_view::npos) return std::nullopt;

  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [position, failure] =
      std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (failure != std::errc{} || position != end) return std::nullopt;
  return number;
}

}  // namespace kestrelink
