#include "TimeText.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

namespace ksaml {

std::string dateText(const kestrelink::SAMLDate& date) {
  const std::time_t instant = date.seconds().time_since_epoch().count();
  std::tm utc{};
  gmtime_r(&instant, &utc);
  std::array<char, 80> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02dZ", utc.tm_year + 1900,
                utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
  return text.data();
}

std::optional<kestrelink::SAMLDate> dateFromText(const std::string& text) {
  std::tm utc{};
  const char* const end = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &utc);
  if (end == nullptr || *end != '\0') return std::nullopt;
  const kestrelink::SAMLDate date{std::chrono::sys_seconds(std::chrono::seconds(timegm(&utc)))};
  // What was only nearly the form, or no day of the calendar, comes back as another text.
  if (dateText(date) != text) return std::nullopt;
  return date;
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
