#pragma once

#include <string_view>

namespace kestrelink {

/// Writes one line to the diagnostic log: syslog(3), with a copy on standard error. The library
/// writes nowhere else. Never pass it text of a message: that is a subscriber's data.
void logDiagnostic(std::string_view line) noexcept;

/// Receives every line instead of the log; null restores the log. For tests.
using DiagnosticObserver = void (*)(std::string_view line) noexcept;
void setDiagnosticObserverForTesting(DiagnosticObserver observer) noexcept;

}  // namespace kestrelink
