// One process, one piece of work: what a cold start costs. cold WORK MESSAGE [TIMES]; the work
// "nothing" only starts libxml2. Prints the work's result and the peak of memory in kB. It is
// built twice: with the library, and with libxml2 alone.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <libxml/parser.h>

#include "bench/Work.h"

#ifdef WITH_LIBRARY
#define WORK bench::libraryWork
#else
#define WORK bench::rawWork
#endif

namespace {

// In kB, of this program alone: what the kernel counts for a child begins with its parent's.
long peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::atol(line.c_str() + 6);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const std::string work = argv[1];
  std::ifstream file(argv[2]);
  const std::string message{std::istreambuf_iterator<char>(file), {}};
  xmlInitParser();
  std::size_t sum = 0;
  const int times = argc > 3 ? std::atoi(argv[3]) : 1;
  for (int time = 0; work != "nothing" && time < times; ++time) sum += WORK(work, message);
  std::printf("%zu %ld\n", sum, peakMemory());
  return 0;
}
