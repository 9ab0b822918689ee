#pragma once

#include <chrono>
#include <optional>

namespace kestrelink {

/// The current time. Every judgement about time in the library asks here.
std::chrono::system_clock::time_point currentTime();

/// Makes the library's clock stand still at an instant; absent lets it run again. For tests.
void setClockForTesting(std::optional<std::chrono::system_clock::time_point> instant);

}  // namespace kestrelink
