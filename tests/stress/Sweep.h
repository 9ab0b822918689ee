#pragma once

#include "tests/stress/Faults.h"
#include "tests/stress/Operations.h"

namespace stress {

struct SweepPlan {
  bool warm = false;  // the operation has run before, so nothing is initialised for the first time
  long stride = 1;    // of how many allocations of libxml2 one fails
  int processes = 1;  // at a time
};

/// Runs the operation once for each of its allocations, with that one failing, each time in a new
/// process, and prints a line of what came of it. False when something did that no table of known
/// faults has.
bool sweep(const Operation& operation, const SweepPlan& plan);

/// The same for one allocation, in this process, with a trace of where it failed.
void runOne(const Operation& operation, bool warm, Through way, long nth);

/// Prints the known faults of libxml2 that none of the sweeps of `rawOperations` met; false when
/// there are some.
bool allKnownFaultsMet();

}  // namespace stress
