#pragma once

#include <chrono>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelink {

/// An instant in whole seconds, as SAML messages carry it (SAML 2.0 core, section 1.3.3).
///
///     if (const auto until = response->authenticationTTL(); until && *until > system_clock::now())
///
/// Unlike a `system_clock::time_point`, which ends in the year 2262, it holds the dates with which
/// providers say "never": comparing it with a time point is exact, and converting it saturates.
class SAMLDate {
 public:
  using time_point = std::chrono::system_clock::time_point;

  constexpr explicit SAMLDate(std::chrono::sys_seconds instant) : instant_(instant) {}
  /// Drops the fraction of a second.
  constexpr SAMLDate(time_point instant)  // NOLINT(google-explicit-constructor): loses little
      : instant_(std::chrono::floor<std::chrono::seconds>(instant)) {}

  constexpr std::chrono::sys_seconds seconds() const { return instant_; }

  /// The instant, or the last or first time point when it lies outside their range.
  constexpr operator time_point() const {  // NOLINT(google-explicit-constructor)
    if (instant_ >= std::chrono::floor<std::chrono::seconds>(time_point::max())) {
      return time_point::max();
    }
    if (instant_ <= std::chrono::ceil<std::chrono::seconds>(time_point::min())) {
      return time_point::min();
    }
    return instant_;
  }

  friend constexpr auto operator<=>(SAMLDate left, SAMLDate right) = default;
  friend constexpr std::strong_ordering operator<=>(SAMLDate left, time_point right) {
    const SAMLDate second(right);
    const bool earlier = left.instant_ < second.instant_;
    if (left.instant_ > second.instant_) return std::strong_ordering::greater;
    return !earlier && right == second.instant_ ? std::strong_ordering::equal
                                                : std::strong_ordering::less;
  }
  friend constexpr bool operator==(SAMLDate left, time_point right) {
    return (left <=> right) == std::strong_ordering::equal;
  }

 private:
  std::chrono::sys_seconds instant_;
};

/// Reads and writes the one text form of dates: "yyyy-MM-ddTHH:mm:ssZ", always UTC, always whole
/// seconds, whatever the locale and time zone of the process.
class SAMLDateFormatter {
 public:
  std::string stringFromDate(SAMLDate date) const;
  /// Absent for anything but exactly that form: fractions of a second and offsets are common in
  /// real messages and do not parse.
  std::optional<SAMLDate> dateFromString(std::string_view text) const;
};

std::optional<std::string> SAMLStringFromDate(std::optional<SAMLDate> date);
std::optional<SAMLDate> SAMLDateFromString(std::optional<std::string_view> text);

}  // namespace kestrelink
