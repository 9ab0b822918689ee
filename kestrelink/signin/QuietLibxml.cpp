#include "kestrelink/signin/QuietLibxml.h"

#include <openssl/err.h>

#include <libxml/globals.h>

namespace kestrelink::signin {
namespace {

void discard(void* /*context*/, const char* /*format*/, ...) noexcept {}

}  // namespace

QuietLibxml::QuietLibxml() noexcept
    : structuredBefore_(xmlStructuredError),
      structuredContextBefore_(xmlStructuredErrorContext),
      genericBefore_(xmlGenericError),
      genericContextBefore_(xmlGenericErrorContext) {
  xmlSetStructuredErrorFunc(nullptr, nullptr);
  xmlSetGenericErrorFunc(nullptr, &discard);
  ERR_set_mark();
}

QuietLibxml::~QuietLibxml() {
  ERR_pop_to_mark();
  xmlSetGenericErrorFunc(genericContextBefore_, genericBefore_);
  xmlSetStructuredErrorFunc(structuredContextBefore_, structuredBefore_);
}

}  // namespace kestrelink::signin
