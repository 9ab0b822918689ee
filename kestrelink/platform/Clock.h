#pragma once

#include <chrono>
#include <optional>

namespace kestrelink {

/// The current time. The library reads the clock only here.
std::chrono::system_clock::time_point currentTime();

/// Stops the library's clock at an instant; `std::nullopt` lets it run again. For tests.
void setClockForTesting(std::optional<std::chrono::system_clock::time_point> instant);

}  // namespace kestrelink
