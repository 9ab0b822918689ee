#pragma once

#include <chrono>
#include <compare>

namespace kestrelink {

/// An instant in whole seconds, as SAML messages carry it (SAML 2.0 core, section 1.3.3).
///
///     if (const auto until = response->authenticationTTL(); until && *until > system_clock::now())
///
/// Unlike a `system_clock::time_point`, which ends in the year 2262, it can hold the year 9999,
/// which providers send for "never". Comparisons with time points of any precision are exact; the
/// conversion to `time_point` saturates. Only the years 0001 to 9999 are written.
class SAMLDate {
 public:
  using time_point = std::chrono::system_clock::time_point;

  /// Drops the fraction of a second.
  template <class Duration>
  constexpr SAMLDate(  // NOLINT(google-explicit-constructor): loses little
      std::chrono::sys_time<Duration> instant)
      : instant_(std::chrono::floor<std::chrono::seconds>(instant)) {}

  constexpr std::chrono::sys_seconds seconds() const { return instant_; }

  /// The instant, or the last or first `time_point` when it is out of range.
  constexpr operator time_point() const {  // NOLINT(google-explicit-constructor)
    if (instant_ > std::chrono::floor<std::chrono::seconds>(time_point::max())) {
      return time_point::max();
    }
    if (instant_ < std::chrono::ceil<std::chrono::seconds>(time_point::min())) {
      return time_point::min();
    }
    return instant_;
  }

  friend constexpr bool operator==(SAMLDate left, SAMLDate right) = default;
  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison with 0 for a pointer
  friend constexpr auto operator<=>(SAMLDate left, SAMLDate right) = default;

  template <class Duration>
  friend constexpr std::strong_ordering operator<=>(SAMLDate left,
                                                    std::chrono::sys_time<Duration> right) {
    const std::strong_ordering order = left.instant_ <=> SAMLDate(right).instant_;
    if (std::is_neq(order)) return order;
    const bool isWhole = right.time_since_epoch() % std::chrono::seconds(1) == Duration::zero();
    return isWhole ? std::strong_ordering::equal : std::strong_ordering::less;
  }
  template <class Duration>
  friend constexpr bool operator==(SAMLDate left, std::chrono::sys_time<Duration> right) {
    return (left <=> right) == std::strong_ordering::equal;
  }

 private:
  std::chrono::sys_seconds instant_;
};

}  // namespace kestrelink
