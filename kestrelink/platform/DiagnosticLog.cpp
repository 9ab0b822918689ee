#include "kestrelink/platform/DiagnosticLog.h"

#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>

namespace kestrelink {
namespace {

std::atomic<DiagnosticObserver> observer{nullptr};

constexpr std::string_view kPrefix = "kestrelink-saml: ";

iovec piece(std::string_view text) { return {const_cast<char*>(text.data()), text.size()}; }

// A closed pipe on standard error must not end the process.
void writeWithoutSignal(const std::array<iovec, 3>& pieces) noexcept {
  sigset_t pipe, pending, before;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  sigpending(&pending);
  pthread_sigmask(SIG_BLOCK, &pipe, &before);
  const ssize_t written = ::writev(STDERR_FILENO, pieces.data(), static_cast<int>(pieces.size()));
  if (written < 0 && errno == EPIPE && sigismember(&pending, SIGPIPE) == 0) {
    const timespec atOnce{};
    sigtimedwait(&pipe, nullptr, &atOnce);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

// Allocates nothing, so that running out of memory can be logged. One call writes the whole line,
// so that lines of several threads do not mix.
void logDiagnostic(std::string_view line) noexcept {
  while (line.ends_with('\n')) line.remove_suffix(1);
  if (const DiagnosticObserver observe = observer.load()) return observe(line);

  ::syslog(LOG_USER | LOG_NOTICE, "%s%.*s", kPrefix.data(), static_cast<int>(line.size()),
           line.data());
  const std::array<iovec, 3> pieces = {piece(kPrefix), piece(line), piece("\n")};
  writeWithoutSignal(pieces);
}

void setDiagnosticObserverForTesting(DiagnosticObserver newObserver) noexcept {
  observer = newObserver;
}

}  // namespace kestrelink
