#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kestrelink/saml/elements/SAMLDate.h"

namespace kestrelink {

/// Reads and writes dates in one form, "yyyy-MM-ddTHH:mm:ssZ": UTC, whole seconds, independent of
/// locale and time zone.
class SAMLDateFormatter {
 public:
  /// `std::nullopt`, with a line in the log, for a year outside 0001 to 9999.
  std::optional<std::string> stringFromDate(SAMLDate date) const;
  /// `std::nullopt` for any other form. Fractions of a second and offsets are common in real
  /// messages and do not parse.
  std::optional<SAMLDate> dateFromString(std::string_view text) const;
};

std::optional<std::string> SAMLStringFromDate(std::optional<SAMLDate> date);
std::optional<SAMLDate> SAMLDateFromString(std::optional<std::string_view> text);

}  // namespace kestrelink
