// Allocations that fail on demand, and a count of the blocks that are in use.
#pragma once

#include <array>
#include <string>

namespace stress {

enum class Through { libxml2, operatorNew };
inline constexpr std::array kWays = {Through::libxml2, Through::operatorNew};

/// Where the planned allocation was made: "xmlReadMemory > xmlStrndup", the function of libxml2
/// that was called from outside and the innermost one that has a name, or "operator new".
using Place = std::array<char, 96>;

/// Puts libxml2's memory functions into ours. Before anything else uses libxml2.
void installHooks();

/// Lets the n-th allocation made inside fault windows from now on fail, and none for 0. `place`
/// receives where; it may be in memory that outlives this process.
void planFault(Through way, long nth, Place* place);

/// From now on a fault prints the stack it happens on.
void traceFaults();

/// Allocations made inside fault windows since the latest plan.
long allocationsSeen(Through way);

/// Blocks of both kinds in use. Takes back libxml2's record of the last error before.
std::array<long, 2> blocksInUse();

/// Only while one lives do allocations count and fail.
class FaultWindow {
 public:
  FaultWindow();
  ~FaultWindow();
  FaultWindow(const FaultWindow&) = delete;
  FaultWindow& operator=(const FaultWindow&) = delete;
};

}  // namespace stress
