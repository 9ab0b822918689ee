#include "tests/stress/Faults.h"

#include <dlfcn.h>
#include <execinfo.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <libxml/xmlerror.h>
#include <libxml/xmlmemory.h>

namespace stress {
namespace {

Counts seen, failing, inUse;
bool windowOpen = false, isLasting = false, isExhausted = false;
Place* placeOfFault = nullptr;

// Functions that libxml2 does not export have no name here.
void notePlace(Through way) {
  if (way == throughOperatorNew) {  // loads nothing, unlike ::backtrace
    std::strcpy(placeOfFault->data(), "operator new");
    return;
  }
  std::array<void*, 64> frames{};
  const int depth = ::backtrace(frames.data(), static_cast<int>(frames.size()));
  const char* inner = nullptr;
  const char* outer = "?";
  for (int frame = 0; frame < depth; ++frame) {
    Dl_info found{};
    if (::dladdr(frames[static_cast<std::size_t>(frame)], &found) == 0) continue;
    if (found.dli_sname == nullptr || !std::strstr(found.dli_fname, "libxml2")) continue;
    outer = found.dli_sname;
    if (inner == nullptr) inner = outer;
  }
  std::snprintf(placeOfFault->data(), placeOfFault->size(), "%s > %s", outer,
                inner == nullptr ? "?" : inner);
}

bool fails(Through way) {
  if (!windowOpen || isExhausted) return isExhausted;
  if (++seen[way] != failing[way]) return false;
  windowOpen = false;  // what is allocated here does not count
  notePlace(way);
  windowOpen = true;
  isExhausted = isLasting;
  return true;
}

void* newBlock(Through way, std::size_t size) {
  void* const block = fails(way) ? nullptr : std::malloc(size);
  if (block != nullptr) ++inUse[way];
  return block;
}
void release(Through way, void* block) {
  if (block != nullptr) --inUse[way];
  std::free(block);
}

void* libxmlMalloc(std::size_t size) { return newBlock(throughLibxml2, size); }
void* libxmlRealloc(void* block, std::size_t size) {
  if (block == nullptr) return libxmlMalloc(size);
  return fails(throughLibxml2) ? nullptr : std::realloc(block, size);
}
char* libxmlStrdup(const char* text) {
  void* const copy = libxmlMalloc(std::strlen(text) + 1);
  return copy == nullptr ? nullptr : std::strcpy(static_cast<char*>(copy), text);
}
void libxmlFree(void* block) { release(throughLibxml2, block); }

}  // namespace

void installHooks() { xmlMemSetup(&libxmlFree, &libxmlMalloc, &libxmlRealloc, &libxmlStrdup); }

void planFault(Through way, long nth, Place* place, bool lasting) {
  seen = failing = {};
  isLasting = lasting;
  failing[way] = nth;
  placeOfFault = place;
}

Counts allocationsSeen() { return seen; }

Counts blocksInUse() {
  xmlResetLastError();
  return inUse;
}

FaultWindow::FaultWindow() { windowOpen = true; }
FaultWindow::~FaultWindow() { windowOpen = isExhausted = false; }

}  // namespace stress

// libxml2 seeds its hash tables with it: the same run must make the same allocations.
extern "C" int rand_r(unsigned* /*seed*/) { return 4; }

#ifndef SANITIZED
// What the C library allocates itself, such as to load a library.
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* malloc(std::size_t size) noexcept {
  return stress::isExhausted ? nullptr : __libc_malloc(size);
}
#endif

// All of them: a sanitizer would otherwise bring its own of those that are left out.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return stress::newBlock(stress::throughOperatorNew, size);
}
void* operator new(std::size_t size) {
  if (void* const block = ::operator new(size, std::nothrow)) return block;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return ::operator new(size); }
void operator delete(void* block) noexcept { stress::release(stress::throughOperatorNew, block); }
void operator delete[](void* block) noexcept { ::operator delete(block); }
void operator delete(void* block, std::size_t) noexcept { ::operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { ::operator delete(block); }
