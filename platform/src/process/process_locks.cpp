#include "platform/process_locks.h"

#include "process/fork_hooks.h"

#include <cassert>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <pthread.h>
#include <syslog.h>

namespace ProcessLocks {
namespace {

constexpr auto kRanks = static_cast<unsigned>(Rank::COUNT);

// Plain, because no other lock can be given back by the child of a fork; and made before anything
// runs, because a child also waits for ever for a thread that was about to make one.
struct RankedLock {
  std::mutex mutex;
  ForkHooks hooks;
};
constinit RankedLock locks[kRanks];

#ifndef NDEBUG
// The ranks that this thread holds, a bit for each.
constinit thread_local unsigned held = 0;

void NoteTaken(unsigned rank) noexcept {
  assert(held >> rank == 0 && "locks are taken in the order of their ranks");
  held |= 1U << rank;
}
void NoteGiven(unsigned rank) noexcept {
  held &= ~(1U << rank);
}
#else
void NoteTaken(unsigned) noexcept {}
void NoteGiven(unsigned) noexcept {}
#endif

void Take(unsigned rank) noexcept {
  NoteTaken(rank);
  locks[rank].mutex.lock();
}

void Give(unsigned rank) noexcept {
  locks[rank].mutex.unlock();
  NoteGiven(rank);
}

void Call(void (*hook)() noexcept) noexcept {
  if (hook != nullptr) {
    hook();
  }
}

void PrepareFork() {
  for (unsigned rank = 0; rank < kRanks; ++rank) {
    Take(rank);
    Call(locks[rank].hooks.prepare);
  }
}

template <void (*ForkHooks::*resume)() noexcept>
void Resume() {
  for (unsigned rank = kRanks; rank-- > 0;) {
    Call(locks[rank].hooks.*resume);
    Give(rank);
  }
}

// Before any other code of the library runs, and so before there is a thread that could hold one.
// The system has room for some dozens of handlers without asking for memory.
[[gnu::constructor(101)]] void Install() {
  const int error = pthread_atfork(PrepareFork, Resume<&ForkHooks::resumeInParent>,
                                   Resume<&ForkHooks::resumeInChild>);
  if (error != 0) {
    syslog(LOG_ERR, "Children that this process forks may hang: %s", std::strerror(error));
  }
}

}  // namespace

Guard::Guard(Rank rank) noexcept : rank_(rank) {
  Take(static_cast<unsigned>(rank));
}

Guard::~Guard() {
  Give(static_cast<unsigned>(rank_));
}

void SetForkHooks(Rank rank, const ForkHooks& hooks) noexcept {
  const Guard guard(rank);
  locks[static_cast<unsigned>(rank)].hooks = hooks;
}

}  // namespace ProcessLocks
