#pragma once

#include <libxml/xmlerror.h>

namespace kestrelink::signin {

/// While it lives, libxml2 writes nothing on this thread, and OpenSSL leaves no error in the
/// thread's queue. The destructor restores the thread's handlers.
class QuietLibxml {
 public:
  QuietLibxml() noexcept;
  ~QuietLibxml();
  QuietLibxml(const QuietLibxml&) = delete;
  QuietLibxml& operator=(const QuietLibxml&) = delete;

 private:
  xmlStructuredErrorFunc structuredBefore_;
  void* structuredContextBefore_;
  xmlGenericErrorFunc genericBefore_;
  void* genericContextBefore_;
};

}  // namespace kestrelink::signin
