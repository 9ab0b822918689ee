// Dates as the standard's schema allows them, to be written as the first library reads them.
#pragma once

#include <optional>
#include <string_view>

#include "kestrelink/saml/elements/SAMLDate.h"

namespace kestrelink::signin {

enum class Rounding { down, up };

/// An xs:dateTime in whole seconds. A date without a time zone is in UTC (SAML 2.0 core, section
/// 1.3.3). `std::nullopt` for what is no date, or outside the years 0001 to 9999.
std::optional<SAMLDate> dateFromText(std::string_view text, Rounding rounding);

}  // namespace kestrelink::signin
