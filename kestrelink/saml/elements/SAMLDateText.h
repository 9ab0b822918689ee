#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kestrelink/saml/elements/SAMLDate.h"

namespace kestrelink {

/// Reads and writes the one text form of dates: "yyyy-MM-ddTHH:mm:ssZ", always UTC, always whole
/// seconds, whatever the locale and time zone of the process.
class SAMLDateFormatter {
 public:
  /// `std::nullopt`, with a line in the log, for a year outside 0001 to 9999.
  std::optional<std::string> stringFromDate(SAMLDate date) const;
  /// Absent for anything but exactly that form: fractions of a second and offsets are common in
  /// real messages and do not parse.
  std::optional<SAMLDate> dateFromString(std::string_view text) const;
};

std::optional<std::string> SAMLStringFromDate(std::optional<SAMLDate> date);
std::optional<SAMLDate> SAMLDateFromString(std::optional<std::string_view> text);

}  // namespace kestrelink
