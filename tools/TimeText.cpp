#include "TimeText.h"

#include <array>
#include <utility>

namespace ksaml {

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
