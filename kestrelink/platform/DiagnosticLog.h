#pragma once

#include <string_view>

namespace kestrelink {

/// Writes one line to the diagnostic log: syslog(3), with a copy on standard error. It is the only
/// place the library writes to. Never hand it a message's text: that is a subscriber's data.
void logDiagnostic(std::string_view line) noexcept;

/// Receives every line instead of the log; null gives the log back. For tests.
using DiagnosticObserver = void (*)(std::string_view line) noexcept;
void setDiagnosticObserverForTesting(DiagnosticObserver observer) noexcept;

}  // namespace kestrelink
