#pragma once

#include <optional>
#include <string_view>

namespace kestrelink {

/// Parses a decimal number ("160", "-2.5") in the same way under every locale. `std::nullopt` when
/// the text holds anything else, white space and exponents included.
std::optional<double> parseDecimal(std::string_view text);

}  // namespace kestrelink
