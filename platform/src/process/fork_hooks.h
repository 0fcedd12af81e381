// What the owner of a lock does when the process forks.
#pragma once

#include "platform/process_locks.h"

namespace ProcessLocks {

/// Each is called with the lock of its rank held, those above too, and none of those below.
struct ForkHooks {
  void (*prepare)() noexcept = nullptr;
  void (*resumeInParent)() noexcept = nullptr;
  void (*resumeInChild)() noexcept = nullptr;
};

/// Called while the process or the library is loaded.
void SetForkHooks(Rank rank, const ForkHooks& hooks) noexcept;

}  // namespace ProcessLocks
