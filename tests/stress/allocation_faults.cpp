// Lets one allocation after the other fail under everything the library does, see
// docs/reliability.md.
//
//   allocation-faults [--short] [OPERATION...]
//   allocation-faults --one OPERATION cold|warm libxml2|new N

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "kestrelink/platform/DiagnosticLog.h"

#include "tests/stress/Sweep.h"

int main(int count, char** words) {
  using namespace stress;
  installHooks();
  kestrelink::setDiagnosticObserverForTesting([](std::string_view) noexcept {});
  sampleWithStranger();
  std::vector<Operation> all = operations();
  all.insert(all.end(), rawOperations().begin(), rawOperations().end());
  std::vector<std::string> arguments(words + 1, words + count);

  if (arguments.size() == 5 && arguments[0] == "--one") {
    for (const Operation& operation : all) {
      if (operation.name != arguments[1]) continue;
      runOne(operation, arguments[2] == "warm",
             arguments[3] == "new" ? Through::operatorNew : Through::libxml2,
             std::atol(arguments[4].c_str()));
    }
    return 0;
  }

  const bool isShort = std::erase(arguments, "--short") > 0;
  SweepPlan plan;
  plan.processes = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 16U));
  bool good = true;
  for (const Operation& operation : all) {
    const bool wanted = arguments.empty() ? !isShort || !operation.raw
                                          : std::find(arguments.begin(), arguments.end(),
                                                      operation.name) != arguments.end();
    if (!wanted) continue;
    for (const bool warm : {false, true}) {
      plan.warm = warm;
      plan.stride = isShort ? operation.shortStride : 1;
      good = sweep(operation, plan) && good;
    }
  }
  if (!isShort && arguments.empty()) good = allKnownFaultsMet() && good;
  return good ? 0 : 1;
}
