#include "TimeText.h"

#include <array>
#include <cstdio>
#include <utility>

namespace ksaml {

// Uses std::chrono, because a 32-bit time_t ends in 2038.
std::string dateText(const kestrelink::SAMLDate& date) {
  const auto day = std::chrono::floor<std::chrono::days>(date.seconds());
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss time(date.seconds() - day);
  std::array<char, 80> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
                static_cast<unsigned>(calendar.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return text.data();
}

std::string spanText(std::chrono::seconds span) {
  constexpr std::array<std::pair<long long, const char*>, 5> kUnits = {
      {{31556952, "year"}, {86400, "day"}, {3600, "hour"}, {60, "minute"}, {1, "second"}}};
  long long rest = span.count() < 0 ? -span.count() : span.count();
  std::string text;
  int parts = 0;
  for (const auto& [length, name] : kUnits) {
    const long long count = rest / length;
    rest %= length;
    if (count == 0) {
      if (parts > 0) break;
      continue;
    }
    if (parts > 0) text += ' ';
    text += std::to_string(count) + ' ' + name + (count == 1 ? "" : "s");
    if (++parts == 2) break;
  }
  return text.empty() ? "0 seconds" : text;
}

}  // namespace ksaml
