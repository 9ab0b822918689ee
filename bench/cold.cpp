// One process, one piece of work: what a cold start costs. cold WORK MESSAGE [TIMES]; with the work
// "nothing" it only starts libxml2. It is built twice: with the library, and with libxml2 alone.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include <libxml/parser.h>

#include "Work.h"

#ifdef WITH_LIBRARY
#define WORK bench::libraryWork
#else
#define WORK bench::rawWork
#endif

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const std::string work = argv[1];
  std::ifstream file(argv[2]);
  const std::string message{std::istreambuf_iterator<char>(file), {}};
  xmlInitParser();
  std::size_t sum = 0;
  const int times = argc > 3 ? std::atoi(argv[3]) : 1;
  for (int time = 0; work != "nothing" && time < times; ++time) sum += WORK(work, message);
  std::printf("%zu\n", sum);
  return 0;
}
