#include "kestrelink/signin/QuietLibxml.h"

#include <openssl/err.h>

#include <cstring>
#include <new>

#include <libxml/globals.h>

namespace kestrelink::signin {
QuietLibxml::QuietLibxml() noexcept
    : structuredBefore_(xmlStructuredError),
      structuredContextBefore_(xmlStructuredErrorContext),
      genericBefore_(xmlGenericError),
      genericContextBefore_(xmlGenericErrorContext) {
  xmlSetStructuredErrorFunc(this, &note);
  xmlSetGenericErrorFunc(this, &noteText);
  ERR_set_mark();
}

QuietLibxml::~QuietLibxml() {
  ERR_pop_to_mark();
  xmlSetGenericErrorFunc(genericContextBefore_, genericBefore_);
  xmlSetStructuredErrorFunc(structuredContextBefore_, structuredBefore_);
}

void QuietLibxml::throwIfOutOfMemory() {
  if (xmlStructuredError != &note) return;
  if (static_cast<const QuietLibxml*>(xmlStructuredErrorContext)->outOfMemory_) {
    throw std::bad_alloc();
  }
}

void QuietLibxml::note(void* self, ErrorRecord error) noexcept {
  if (error == nullptr || error->code != XML_ERR_NO_MEMORY) return;
  static_cast<QuietLibxml*>(self)->outOfMemory_ = true;
}

// Lists, which canonical forms are made with, report nothing but "Cannot initialize memory ...".
void QuietLibxml::noteText(void* self, const char* format, ...) noexcept {
  if (std::strstr(format, "memory") == nullptr) return;
  static_cast<QuietLibxml*>(self)->outOfMemory_ = true;
}

}  // namespace kestrelink::signin
