#include "platform/daemon_patience.h"

#include <atomic>

namespace DaemonPatience {
namespace {

constexpr int kLimit = 100;
constinit std::atomic<bool> lost{false};

}  // namespace

int Limit() noexcept {
  return lost.load(std::memory_order_relaxed) ? 0 : kLimit;
}

void NoteAnswer() noexcept {
  lost.store(false, std::memory_order_relaxed);
}

void NoteTimeout() noexcept {
  lost.store(true, std::memory_order_relaxed);
}

}  // namespace DaemonPatience
