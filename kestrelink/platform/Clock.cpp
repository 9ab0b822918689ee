#include "kestrelink/platform/Clock.h"

#include <atomic>

namespace kestrelink {
namespace {

using std::chrono::system_clock;

constexpr system_clock::rep kRunning = system_clock::duration::min().count();
std::atomic<system_clock::rep> standingStillAt{kRunning};

}  // namespace

system_clock::time_point currentTime() {
  const system_clock::rep ticks = standingStillAt.load(std::memory_order_relaxed);
  if (ticks == kRunning) return system_clock::now();
  return system_clock::time_point(system_clock::duration(ticks));
}

void setClockForTesting(std::optional<system_clock::time_point> instant) {
  standingStillAt = instant ? instant->time_since_epoch().count() : kRunning;
}

}  // namespace kestrelink
