#include "tests/stress/Faults.h"

#include <dlfcn.h>
#include <execinfo.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include <libxml/xmlerror.h>
#include <libxml/xmlmemory.h>

namespace stress {
namespace {

struct Allocations {
  long seen = 0;
  long failing = 0;
  long inUse = 0;
};
std::array<Allocations, 2> allocations;
Allocations& of(Through way) { return allocations[static_cast<std::size_t>(way)]; }

bool windowOpen = false;
Place* placeOfFault = nullptr;
bool tracing = false;

// Functions that libxml2 does not export have no name here.
void notePlaceInLibxml2() {
  std::array<void*, 64> frames{};
  const int depth = ::backtrace(frames.data(), static_cast<int>(frames.size()));
  std::string_view inner = "?";
  std::string_view outer = "?";
  for (int frame = 0; frame < depth; ++frame) {
    Dl_info found{};
    if (::dladdr(frames[static_cast<std::size_t>(frame)], &found) == 0) continue;
    if (found.dli_sname == nullptr || !std::strstr(found.dli_fname, "libxml2")) continue;
    if (inner == "?") inner = found.dli_sname;
    outer = found.dli_sname;
  }
  std::snprintf(placeOfFault->data(), placeOfFault->size(), "%.*s > %.*s",
                static_cast<int>(outer.size()), outer.data(), static_cast<int>(inner.size()),
                inner.data());
}

bool fails(Through way) {
  if (!windowOpen) return false;
  Allocations& counted = of(way);
  if (++counted.seen != counted.failing) return false;
  windowOpen = false;  // nothing that happens here counts
  if (tracing) {
    std::array<void*, 64> frames{};
    ::backtrace_symbols_fd(frames.data(), ::backtrace(frames.data(), 64), 2);
  }
  if (way == Through::libxml2) {
    notePlaceInLibxml2();
  } else {
    std::strcpy(placeOfFault->data(), "operator new");
  }
  windowOpen = true;
  return true;
}

void* counted(Through way, void* block) {
  if (block != nullptr) ++of(way).inUse;
  return block;
}

void release(Through way, void* block) {
  if (block != nullptr) --of(way).inUse;
  std::free(block);
}

void* libxmlMalloc(std::size_t size) {
  if (fails(Through::libxml2)) return nullptr;
  return counted(Through::libxml2, std::malloc(size));
}
void* libxmlRealloc(void* block, std::size_t size) {
  if (fails(Through::libxml2)) return nullptr;
  void* const moved = std::realloc(block, size);
  return block == nullptr ? counted(Through::libxml2, moved) : moved;
}
char* libxmlStrdup(const char* text) {
  if (fails(Through::libxml2)) return nullptr;
  return static_cast<char*>(counted(Through::libxml2, ::strdup(text)));
}
void libxmlFree(void* block) { release(Through::libxml2, block); }

}  // namespace

void* newBlock(std::size_t size) {
  if (fails(Through::operatorNew)) return nullptr;
  return counted(Through::operatorNew, std::malloc(size));
}
void deleteBlock(void* block) { release(Through::operatorNew, block); }

void installHooks() {
  std::array<void*, 1> frame{};
  ::backtrace(frame.data(), 1);  // loads what it needs, now
  xmlMemSetup(&libxmlFree, &libxmlMalloc, &libxmlRealloc, &libxmlStrdup);
}

void planFault(Through way, long nth, Place* place) {
  for (Allocations& each : allocations) each.seen = each.failing = 0;
  of(way).failing = nth;
  placeOfFault = place;
}

void traceFaults() { tracing = true; }

long allocationsSeen(Through way) { return of(way).seen; }

std::array<long, 2> blocksInUse() {
  xmlResetLastError();
  return {of(Through::libxml2).inUse, of(Through::operatorNew).inUse};
}

FaultWindow::FaultWindow() { windowOpen = true; }
FaultWindow::~FaultWindow() { windowOpen = false; }

}  // namespace stress

// libxml2 seeds its hash tables with it: the same run must make the same allocations.
extern "C" int rand_r(unsigned* /*seed*/) { return 4; }

void* operator new(std::size_t size) {
  if (void* const block = stress::newBlock(size)) return block;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return ::operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return stress::newBlock(size);
}
void operator delete(void* block) noexcept { stress::deleteBlock(block); }
void operator delete[](void* block) noexcept { stress::deleteBlock(block); }
void operator delete(void* block, std::size_t) noexcept { stress::deleteBlock(block); }
void operator delete[](void* block, std::size_t) noexcept { stress::deleteBlock(block); }
