// Preloaded into a program: the allocation whose number is in the environment's FAILING fails, and
// descriptor 9 says so.

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {

bool fails() {
  static const char* const number = std::getenv("FAILING");
  static long left = number == nullptr ? 0 : std::atol(number);
  if (--left != 0 || ::write(9, "failed", 6) != 6) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) noexcept { return fails() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) noexcept {
  return fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
  return fails() ? nullptr : __libc_realloc(block, size);
}

}  // extern "C"
