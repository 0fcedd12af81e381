#include "db/open_databases.h"

#include "process/fork_hooks.h"

#include <atomic>

namespace DBStore::internal::OpenDatabases {
namespace {

using ProcessLocks::Guard;
using ProcessLocks::Rank;

// Under the lock.
constinit std::size_t open = 0;
constinit std::size_t atRest = 0;
constinit bool childIsRefused = false;  // were the process to fork now

constinit std::atomic<std::uint64_t> ever{0};
constinit std::atomic<bool> outOfReach{false};

// Every open database that nobody vouches for is being opened, closed or used by some thread.
[[maybe_unused]] const bool hooksAreSet = [] {
  ProcessLocks::SetForkHooks(Rank::OPEN_DATABASES,
                             {.prepare = []() noexcept { childIsRefused = open != atRest; },
                              .resumeInChild =
                                  []() noexcept {
                                    if (childIsRefused) {
                                      outOfReach.store(true, std::memory_order_relaxed);
                                    }
                                  }});
  return true;
}();

}  // namespace

void Enter() noexcept {
  const Guard guard(Rank::OPEN_DATABASES);
  ++open;
  ever.fetch_add(1, std::memory_order_relaxed);
}

void Leave() noexcept {
  const Guard guard(Rank::OPEN_DATABASES);
  --open;
}

bool AreOutOfReach() noexcept {
  return outOfReach.load(std::memory_order_relaxed);
}

void NoteAtRest(std::size_t count) noexcept {
  atRest = count;
}

std::uint64_t CountEver() noexcept {
  return ever.load(std::memory_order_relaxed);
}

}  // namespace DBStore::internal::OpenDatabases
