#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <new>
#include <string_view>

#include "kestrelink/platform/DiagnosticLog.h"

namespace kestrelink {
namespace {

// A hostile message can have an error in every byte, so the log is limited.
constexpr int kMostLines = 8;

std::array<int, 4> identityOf(const xmlError& error) {
  return {error.domain, error.code, error.line, error.int2};
}

// libxml2 also reports texts, attributes, node sets and URLs beyond its own limits with the code
// for out of memory. A hostile message must not be reported as out of memory.
bool isLimit(const xmlError& error) {
  const std::string_view message = error.message == nullptr ? "" : error.message;
  constexpr std::string_view kLimits[] = {"huge", "overflow", "too long", "limit"};
  return std::any_of(std::begin(kLimits), std::end(kLimits), [message](std::string_view limit) {
    return message.find(limit) != std::string_view::npos;
  });
}

template <typename... Numbers>
void logNumbers(const char* format, Numbers... numbers) noexcept {
  std::array<char, 96> line{};
  std::snprintf(line.data(), line.size(), format, numbers...);
  logDiagnostic(line.data());
}

}  // namespace

LibxmlErrorRoute::LibxmlErrorRoute(During during) noexcept
    : structuredBefore_(xmlStructuredError),
      structuredContextBefore_(xmlStructuredErrorContext),
      genericBefore_(xmlGenericError),
      genericContextBefore_(xmlGenericErrorContext) {
  xmlSetStructuredErrorFunc(this, during == During::parsing ? &structured : nullptr);
  xmlSetGenericErrorFunc(this, &generic);
  // `generic` would report an old error again. After an old I/O error libxml2 also compiles a
  // schema without a missing import.
  xmlResetLastError();
}

LibxmlErrorRoute::~LibxmlErrorRoute() {
  xmlSetStructuredErrorFunc(structuredContextBefore_, structuredBefore_);
  xmlSetGenericErrorFunc(genericContextBefore_, genericBefore_);
  if (count_ > kMostLines) logNumbers("libxml2: %d more errors", count_ - kMostLines);
}

void LibxmlErrorRoute::throwIfOutOfMemory() const {
  if (outOfMemory_) throw std::bad_alloc();
}

void LibxmlErrorRoute::noteOutOfMemory() noexcept {
  if (xmlGenericError != &generic) return;
  static_cast<LibxmlErrorRoute*>(xmlGenericErrorContext)->outOfMemory_ = true;
}

void LibxmlErrorRoute::structured(void* route, LibxmlErrorRecord error) noexcept {
  if (error != nullptr) static_cast<LibxmlErrorRoute*>(route)->report(*error);
}

// libxml2 calls this several times for one error, with pieces of its text. The record is complete.
void LibxmlErrorRoute::generic(void* route, const char* /*format*/, ...) noexcept {
  const xmlError* const error = libxmlLastError();
  auto* const self = static_cast<LibxmlErrorRoute*>(route);
  if (error != nullptr && self->lastReported_ != identityOf(*error)) self->report(*error);
}

void LibxmlErrorRoute::report(const xmlError& error) noexcept {
  // An attribute that is too long is reported twice, the second time as out of memory.
  // Looks at the code first: a text can be long, and there can be very many.
  if (error.code == XML_ERR_NO_MEMORY && lastReported_[1] != XML_ERR_ATTRIBUTE_NOT_FINISHED &&
      !isLimit(error)) {
    outOfMemory_ = true;
  }
  lastReported_ = identityOf(error);
  if (++count_ > kMostLines) return;
  logNumbers("libxml2: error domain %d code %d line %d", error.domain, error.code, error.line);
}

}  // namespace kestrelink
