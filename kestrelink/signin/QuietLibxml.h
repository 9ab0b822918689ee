#pragma once

#include <libxml/xmlerror.h>
#include <libxml/xmlversion.h>

#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {

/// While it lives, libxml2 writes nothing on this thread, for its errors quote unverified messages,
/// and OpenSSL leaves no error in the thread's queue. The destructor restores the thread's
/// handlers.
///
/// It also detects that libxml2 ran out of memory: libxml2 then often continues with an incomplete
/// tree.
class QuietLibxml {
 public:
  QuietLibxml() noexcept;
  ~QuietLibxml();
  QuietLibxml(const QuietLibxml&) = delete;
  QuietLibxml& operator=(const QuietLibxml&) = delete;

  /// Throws `std::bad_alloc` if it did while the latest of this thread lived.
  static void throwIfOutOfMemory();

 private:
#if LIBXML_VERSION >= 21200
  using ErrorRecord = const xmlError*;
#else
  using ErrorRecord = xmlError*;
#endif
  static void note(void* self, ErrorRecord error) noexcept;
  static void noteText(void* self, const char* format, ...) noexcept;

  bool outOfMemory_ = false;
  xmlStructuredErrorFunc structuredBefore_;
  void* structuredContextBefore_;
  xmlGenericErrorFunc genericBefore_;
  void* genericContextBefore_;
};

/// What the steps return or refuse, unless libxml2 ran out of memory: then `std::bad_alloc`.
template <class Steps>
auto quietly(Steps steps) {
  const QuietLibxml quiet;
  try {
    auto result = steps();
    QuietLibxml::throwIfOutOfMemory();
    return result;
  } catch (const Refusal&) {
    QuietLibxml::throwIfOutOfMemory();
    throw;
  }
}

}  // namespace kestrelink::signin
