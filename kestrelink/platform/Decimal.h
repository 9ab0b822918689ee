#pragma once

#include <optional>
#include <string_view>

namespace kestrelink {

/// The number that a decimal text names ("160", "-2.5"), whatever the locale; absent when the text
/// holds anything else, white space and exponents included.
std::optional<double> parseDecimal(std::string_view text);

}  // namespace kestrelink
