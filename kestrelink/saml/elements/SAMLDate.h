#pragma once

#include <chrono>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

namespace kestrelink {

/// An instant in whole seconds, as SAML messages carry it (SAML 2.0 core, section 1.3.3).
///
///     if (const auto until = response->authenticationTTL(); until && *until > system_clock::now())
///
/// Unlike a `system_clock::time_point`, which ends in the year 2262, it can hold the year 9999,
/// which providers send for "never". Comparisons with time points of any precision are exact; the
/// conversion to `time_point` saturates. Only the years 0001 to 9999 are written.
///
///     std::cout << *response->authenticationTTL() << "\n";  // 2026-01-15T20:15:02Z
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

/// The date as messages carry it, "2026-01-15T20:15:02Z"; an empty text outside the years 0001 to
/// 9999.
[[nodiscard]] inline std::string textOf(SAMLDate date) {
  const auto day = std::chrono::floor<std::chrono::days>(date.seconds());
  if (day < std::chrono::sys_days(std::chrono::year(1) / 1 / 1) ||
      day >= std::chrono::sys_days(std::chrono::year(10000) / 1 / 1))
    return {};
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss<std::chrono::seconds> time(date.seconds() - day);
  std::string text = "0000-00-00T00:00:00Z";
  // Writes a number over the digits that end before `end`.
  const auto write = [&text](std::size_t end, std::int64_t value) {
    for (; value > 0; value /= 10) text[--end] = static_cast<char>('0' + value % 10);
  };
  write(4, static_cast<int>(calendar.year()));
  write(7, static_cast<unsigned>(calendar.month()));
  write(10, static_cast<unsigned>(calendar.day()));
  write(13, time.hours().count());
  write(16, time.minutes().count());
  write(19, time.seconds().count());
  return text;
}

inline std::ostream& operator<<(std::ostream& out, SAMLDate date) { return out << textOf(date); }

}  // namespace kestrelink
