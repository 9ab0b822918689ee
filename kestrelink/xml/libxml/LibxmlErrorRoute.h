#pragma once

#include <array>

#include "kestrelink/xml/libxml/LibxmlCompat.h"

namespace kestrelink {

/// While it lives, what libxml2 would print on standard error for this thread goes to the
/// diagnostic log instead, as domain, code and line: its own text would quote the message. The
/// handlers the thread had are back afterwards.
///
/// It also notices when memory runs out: libxml2 then often goes on with less than it was given,
/// and returns a tree, a schema or a set that lacks something.
class LibxmlErrorRoute {
 public:
  enum class During {
    parsing,  // also XPath: libxml2's errors come to us alone
    schema,   // the schema callbacks report, so libxml2 must not prefer a structured handler
  };

  explicit LibxmlErrorRoute(During during) noexcept;
  ~LibxmlErrorRoute();
  LibxmlErrorRoute(const LibxmlErrorRoute&) = delete;
  LibxmlErrorRoute& operator=(const LibxmlErrorRoute&) = delete;

  bool outOfMemory() const { return outOfMemory_; }
  /// Throws std::bad_alloc if so.
  void throwIfOutOfMemory() const;
  /// Lets the latest route of this thread know that memory ran out in a callback of ours.
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
