// One target for libFuzzer; TARGET is its function.
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/Targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool started = (fuzz::start(), true);
  if (started) fuzz::TARGET({reinterpret_cast<const char*>(data), size});
  return 0;
}
