// Allocations that fail on demand, and a count of the blocks that are in use.
#pragma once

#include <array>
#include <cstddef>

namespace stress {

enum Through : std::size_t { throughLibxml2, throughOperatorNew };
using Counts = std::array<long, 2>;  // for each of the two ways

/// Where an allocation failed: "xmlReadMemory > xmlStrndup", the function of libxml2 that was
/// called from outside and the innermost one that has a name, or "operator new".
using Place = std::array<char, 96>;

/// Puts libxml2's memory functions into ours. Before anything else uses libxml2.
void installHooks();

/// Lets the n-th allocation made inside fault windows from now on fail, and none for 0; when the
/// fault is lasting, also everything after it, in the C library too, until the window closes.
/// `place` receives where; it may be in memory that outlives this process.
void planFault(Through way, long nth, Place* place, bool lasting = false);

/// Allocations made inside fault windows since the latest plan.
Counts allocationsSeen();

/// Blocks in use, but for libxml2's record of the last error, which is taken back before.
Counts blocksInUse();

/// Only while one lives do allocations count and fail.
struct FaultWindow {
  FaultWindow();
  ~FaultWindow();
  FaultWindow(const FaultWindow&) = delete;
  FaultWindow& operator=(const FaultWindow&) = delete;
};

}  // namespace stress
