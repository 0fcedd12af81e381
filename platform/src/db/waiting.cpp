#include "db/waiting.h"

#include "process/clock.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <ctime>

namespace DBStore::internal {
namespace {

constexpr std::int64_t kMicrosecond = 1'000;
constexpr std::int64_t kMillisecond = 1'000'000;

// Of the process: how many writes may follow before it takes itself for alone, and when the last
// one ended.
constexpr int kRemembered = 16;
constinit std::atomic<int> contended{0};
constinit std::atomic<std::int64_t> lastWritten{0};

// One thread waits for one lock at a time.
struct Wait {
  std::int64_t began = 0;
  std::uint32_t random = 0;
};
constinit thread_local Wait wait;

// xorshift32; what it has to be is different for each thread.
std::uint32_t Random() noexcept {
  std::uint32_t& x = wait.random;
  while (x == 0) {
    x = static_cast<std::uint32_t>(Clock::Now() / kMicrosecond) ^
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&wait) >> 4U);
  }
  x ^= x << 13U;
  x ^= x >> 17U;
  x ^= x << 5U;
  return x;
}

// A lock is held for about as long as a disk takes to write. Who has waited through many such turns
// looks more often than who has just come, and so is served before.
std::int64_t NextSleep(std::int64_t waited) noexcept {
  const std::int64_t most = waited < 6 * kMillisecond    ? 1'200 * kMicrosecond
                            : waited < 12 * kMillisecond ? 600 * kMicrosecond
                            : waited < 24 * kMillisecond ? 200 * kMicrosecond
                                                         : 50 * kMicrosecond;
  return most / 4 + static_cast<std::int64_t>(Random()) % most;
}

void SleepFor(std::int64_t nanoseconds) noexcept {
  const timespec pause = {0, static_cast<long>(nanoseconds)};
  nanosleep(&pause, nullptr);
}

int Sleep(void* limit, int calls) {
  const std::int64_t now = Clock::Now();
  if (calls == 0) {
    wait.began = now;
    contended.store(kRemembered, std::memory_order_relaxed);
  }
  const std::int64_t waited = now - wait.began;
  const auto most =
      static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(limit)) * kMillisecond;
  if (waited >= most) {
    return 0;
  }
  SleepFor(std::min(NextSleep(waited), most - waited));
  return 1;
}

}  // namespace

void WaitAtMost(sqlite3* database, int milliseconds) noexcept {
  // The limit is all that the handler has to know. NOLINTNEXTLINE(performance-no-int-to-ptr)
  void* const limit = reinterpret_cast<void*>(static_cast<std::intptr_t>(milliseconds));
  sqlite3_busy_handler(database, milliseconds > 0 ? Sleep : nullptr, limit);
}

void LetOthersWrite() noexcept {
  constexpr std::int64_t kMoment = 150 * kMicrosecond;
  const int left = contended.load(std::memory_order_relaxed);
  if (left == 0) {
    return;
  }
  contended.store(left - 1, std::memory_order_relaxed);
  const std::int64_t since = Clock::Now() - lastWritten.load(std::memory_order_relaxed);
  if (since < kMoment) {
    SleepFor(kMoment - since);
  }
}

void NoteWritten() noexcept {
  if (contended.load(std::memory_order_relaxed) != 0) {
    lastWritten.store(Clock::Now(), std::memory_order_relaxed);
  }
}

}  // namespace DBStore::internal
