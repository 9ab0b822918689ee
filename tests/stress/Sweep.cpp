#include "tests/stress/Sweep.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <new>
#include <utility>

#include "tests/stress/KnownFaults.h"

namespace stress {
namespace {

// What came of one failing allocation. The first three are as it should be.
constexpr std::array<std::string_view, 11> kVerdicts = {
    "right",    "absent",       "bad_alloc",  "crash", "hang",   "wrong",
    "accepted", "undocumented", "next wrong", "leak",  "printed"};
enum Verdict {
  right,
  absent,
  badAlloc,
  crash,
  hang,
  wrong,
  accepted,
  undocumented,
  nextWrong,
  leak,
  printed
};

struct Outcome {
  Verdict verdict = crash;
  Place place{};
};

// What the processes tell each other.
struct Shared {
  std::array<char, 1 << 17> text{};
  bool absent = false;
  std::array<long, 2> allocations{};
  std::array<long, 2> gained{};
  std::array<Outcome, 16> outcomes{};
  std::array<bool, std::size(kKnownFaults)> met{};
};

Shared& shared() {
  static auto* const memory = new (::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                          MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Shared;
  return *memory;
}

bool isExpected(const Answer& answer) {
  return answer.absent == shared().absent && answer.text == shared().text.data();
}

template <class Work>
pid_t inNewProcess(Work work) {
  std::fflush(stdout);
  const pid_t process = ::fork();
  if (process != 0) return process;
  work();
  std::fflush(stdout);
  ::_exit(0);
}

bool endedWell(pid_t process) {
  int status = 0;
  ::waitpid(process, &status, 0);
  return status == 0;
}

std::array<long, 2> gainedSince(const std::array<long, 2>& before) {
  const std::array<long, 2> now = blocksInUse();
  return {now[0] - before[0], now[1] - before[1]};
}

// The answer without a failure, and the blocks that two of them leave in use.
void expect(const Operation& operation) {
  const std::array<long, 2> before = blocksInUse();
  planFault(Through::libxml2, 0, nullptr);
  {
    const Answer answer = operation.run();
    for (const Through way : kWays) {
      shared().allocations[static_cast<std::size_t>(way)] = allocationsSeen(way);
    }
    shared().absent = answer.absent;
    std::snprintf(shared().text.data(), shared().text.size(), "%s", answer.text.c_str());
    if (!isExpected(answer) || !isExpected(operation.run())) std::abort();
  }
  shared().gained = gainedSince(before);
}

Verdict answered(const Operation& operation) {
  try {
    const Answer answer = operation.run();
    if (isExpected(answer)) return right;
    if (!answer.absent) return shared().absent ? accepted : wrong;
    const auto& codes = operation.documented;
    return std::find(codes.begin(), codes.end(), answer.text) != codes.end() ? absent
                                                                             : undocumented;
  } catch (const std::bad_alloc&) {
    return badAlloc;
  }
}

// Also whether the next call is right, and whether more blocks stay in use than without a failure.
void attempt(const Operation& operation, Through way, long nth, Outcome& outcome) {
  const std::array<long, 2> before = blocksInUse();
  planFault(way, nth, &outcome.place);
  Verdict verdict = answered(operation);
  planFault(way, 0, nullptr);
  if (verdict <= badAlloc && !isExpected(operation.run())) verdict = nextWrong;
  const std::array<long, 2> gained = gainedSince(before);
  const bool more = gained[0] > shared().gained[0] || gained[1] > shared().gained[1];
  outcome.verdict = verdict <= badAlloc && more ? leak : verdict;
}

void attemptInSilence(const Operation& operation, Through way, long nth, Outcome& outcome) {
  const int output = ::memfd_create("output", 0);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(output, STDERR_FILENO);
  ::alarm(30);
  attempt(operation, way, nth, outcome);
  const bool wrote = ::lseek(output, 0, SEEK_END) > 0;
  if (outcome.verdict <= badAlloc && wrote) outcome.verdict = printed;
}

struct Tally {
  long swept = 0;
  std::array<long, kVerdicts.size()> verdicts{};
  long listed = 0;
  std::map<std::string, std::pair<long, long>> unlisted;  // what and where: how often, first n
};

void count(Tally& tally, const Operation& operation, const Outcome& outcome, long nth) {
  ++tally.swept;
  ++tally.verdicts[outcome.verdict];
  if (outcome.verdict <= badAlloc) return;
  for (std::size_t index = 0; index < std::size(kKnownFaults); ++index) {
    const KnownFault& known = kKnownFaults[index];
    if (known.verdict != kVerdicts[outcome.verdict] || known.place != outcome.place.data())
      continue;
    if (operation.raw) shared().met[index] = true;
    ++tally.listed;
    return;
  }
  const std::string what = std::string(kVerdicts[outcome.verdict]) + ": " + outcome.place.data();
  ++tally.unlisted.try_emplace(what, 0, nth).first->second.first;
}

Tally sweepWay(const Operation& operation, Through way, const SweepPlan& plan) {
  struct Running {
    long nth;
    std::size_t slot;
  };
  Tally tally;
  std::map<pid_t, Running> running;
  const auto waitForOne = [&] {
    int status = 0;
    const auto ended = running.extract(::wait(&status));
    const auto [nth, slot] = ended.mapped();
    Outcome& outcome = shared().outcomes[slot];
    if (status != 0) {
      outcome.verdict = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM ? hang : crash;
    }
    count(tally, operation, outcome, nth);
    return slot;
  };
  const long last = shared().allocations[static_cast<std::size_t>(way)];
  const long stride = way == Through::libxml2 ? plan.stride : 1;
  for (long nth = 1; nth <= last; nth += stride) {
    const std::size_t slot =
        running.size() < static_cast<std::size_t>(plan.processes) ? running.size() : waitForOne();
    shared().outcomes[slot] = {};
    running.emplace(
        inNewProcess([&] { attemptInSilence(operation, way, nth, shared().outcomes[slot]); }),
        Running{nth, slot});
  }
  while (!running.empty()) waitForOne();
  return tally;
}

bool report(const Operation& operation, const SweepPlan& plan, Through way, const Tally& tally) {
  const std::size_t kind = static_cast<std::size_t>(way);
  std::printf("%-20s %s %-12s %6ld of %6ld:", operation.name.data(), plan.warm ? "warm" : "cold",
              way == Through::libxml2 ? "libxml2" : "operator new", tally.swept,
              shared().allocations[kind]);
  for (const Verdict verdict : {right, absent, badAlloc}) {
    std::printf(" %6ld %s", tally.verdicts[verdict], kVerdicts[verdict].data());
  }
  std::printf(", %ld known faults\n", tally.listed);
  for (const auto& [what, where] : tally.unlisted) {
    std::printf("  FAULT %s: %ld times, first at %ld\n", what.c_str(), where.first, where.second);
  }
  return tally.unlisted.empty();
}

void makeWarm(const Operation& operation) {
  for (int time = 0; time < 2; ++time) static_cast<void>(operation.run());
}

}  // namespace

bool sweep(const Operation& operation, const SweepPlan& plan) {
  shared();
  return endedWell(inNewProcess([&] {
    if (plan.warm) makeWarm(operation);
    bool good = endedWell(inNewProcess([&] { expect(operation); }));
    for (const Through way : kWays) {
      if (operation.raw && way == Through::operatorNew) continue;
      good = report(operation, plan, way, sweepWay(operation, way, plan)) && good;
    }
    std::fflush(stdout);
    if (!good) ::_exit(1);
  }));
}

void runOne(const Operation& operation, bool warm, Through way, long nth) {
  shared();
  if (warm) makeWarm(operation);
  endedWell(inNewProcess([&] { expect(operation); }));
  Outcome outcome;
  traceFaults();
  attempt(operation, way, nth, outcome);
  std::printf("%s at %s\n", kVerdicts[outcome.verdict].data(), outcome.place.data());
}

bool allKnownFaultsMet() {
  bool all = true;
  for (std::size_t index = 0; index < std::size(kKnownFaults); ++index) {
    if (shared().met[index]) continue;
    all = false;
    std::printf("known fault not met: %s: %s\n", kKnownFaults[index].verdict.data(),
                kKnownFaults[index].place.data());
  }
  return all;
}

}  // namespace stress
