#include <cstdio>
#include <cstdlib>
#include <memory>

#include "kestrelink/platform/DiagnosticLog.h"

#include "tests/fuzz/Targets.h"

namespace fuzz {

// The log would only slow the search; its lines are tried elsewhere.
void start() {
  kestrelink::setDiagnosticObserverForTesting([](std::string_view) noexcept {});
}

const kestrelink::SAMLParserController& withoutSchema() {
  static const auto controller = [] {
    auto made = std::make_unique<kestrelink::SAMLParserController>();
    made->setSchemaData(nullptr);
    return made;
  }();
  return *controller;
}

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace fuzz
