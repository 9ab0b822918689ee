#pragma once

#include <chrono>
#include <compare>

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

  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison with 0 for a pointer
  friend constexpr auto operator<=>(SAMLDate left, SAMLDate right) = default;
  friend constexpr std::strong_ordering operator<=>(SAMLDate left, time_point right) {
    const SAMLDate second(right);
    if (left.instant_ > second.instant_) return std::strong_ordering::greater;
    if (left.instant_ < second.instant_) return std::strong_ordering::less;
    const bool whole = right.time_since_epoch() % std::chrono::seconds(1) == time_point::duration();
    return whole ? std::strong_ordering::equal : std::strong_ordering::less;
  }
  friend constexpr bool operator==(SAMLDate left, time_point right) {
    return (left <=> right) == std::strong_ordering::equal;
  }

 private:
  std::chrono::sys_seconds instant_;
};

}  // namespace kestrelink
