#pragma once

#include <array>

#include "kestrelink/xml/libxml/LibxmlCompat.h"

namespace kestrelink {

/// While it lives, libxml2's errors on this thread go to the diagnostic log instead of standard
/// error, as domain, code and line: libxml2's own text would quote the message. The destructor
/// restores the thread's handlers.
///
/// It also detects that libxml2 ran out of memory: libxml2 then often continues and returns an
/// incomplete tree, schema or node set.
class LibxmlErrorRoute {
 public:
  enum class During {
    parsing,  // also XPath: a structured handler receives libxml2's errors
    schema,   // no structured handler: libxml2 would call it instead of the schema callbacks
  };

  explicit LibxmlErrorRoute(During during) noexcept;
  ~LibxmlErrorRoute();
  LibxmlErrorRoute(const LibxmlErrorRoute&) = delete;
  LibxmlErrorRoute& operator=(const LibxmlErrorRoute&) = delete;

  bool outOfMemory() const { return outOfMemory_; }
  /// Throws `std::bad_alloc` if `outOfMemory`.
  void throwIfOutOfMemory() const;
  /// Tells the latest route of this thread that a callback of ours ran out of memory.
  static void noteOutOfMemory() noexcept;

 private:
  static void structured(void* route, LibxmlErrorRecord error) noexcept;
  static void generic(void* route, const char* format, ...) noexcept;
  void report(const xmlError& error) noexcept;

  xmlStructuredErrorFunc structuredBefore_;
  void* structuredContextBefore_;
  xmlGenericErrorFunc genericBefore_;
  void* genericContextBefore_;
  std::array<int, 4> lastReported_{};  // domain, code, line and column
  int count_ = 0;
  bool outOfMemory_ = false;
};

}  // namespace kestrelink
