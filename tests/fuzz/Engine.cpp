// One target for libFuzzer; TARGET is its function.
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/Targets.h"

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  fuzz::start();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::TARGET({reinterpret_cast<const char*>(data), size});
  return 0;
}
