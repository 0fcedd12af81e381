#include "watch_stop.h"

#include "failure.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace tarnctl {
namespace {

// Open until the process is gone, since the handler stays.
std::atomic<int> stopDescriptor{-1};

extern "C" void RequestStop(int /*signal*/) {
  const int error = errno;
  const std::uint64_t one = 1;
  if (::write(stopDescriptor.load(std::memory_order_relaxed), &one, sizeof one) < 0) {
    // Full: it has been asked for often enough.
  }
  errno = error;
}

}  // namespace

int CatchStopSignals() {
  if (stopDescriptor < 0) {
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) {
      throw ToolError(ExitCode::FAILED,
                      "cannot wait for signals: " + std::generic_category().message(errno));
    }
    stopDescriptor = descriptor;
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) {
      // Without SA_RESTART, so that output nobody reads is given up too.
      struct sigaction stop {};
      stop.sa_handler = RequestStop;
      ::sigaction(signal, &stop, nullptr);
    }
  }
  return stopDescriptor;
}

}  // namespace tarnctl
