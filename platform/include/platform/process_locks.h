// The locks that all threads of the process share. A fork takes them all, so that its child never
// finds one held by a thread that it does not have.
#pragma once

#include "platform/no_cancellation.h"

namespace ProcessLocks {

/// The locks, in the order in which they are taken: who holds one may take those that stand below
/// it, never one above or the same again.
enum class Rank : unsigned {
  NOTIFY_ALLOWLIST,       ///< held while the file is read
  SCHEMA_ADMINISTRATION,  ///< held while the schema store is written, or read as a whole
  SCHEMA_READING,         ///< held while types are read for use
  CURRENT_TYPES,          ///< for a look-up: which types are the current ones
  USED_TYPES,             ///< for a look-up: what was read of them
  COMPILED_SCHEMAS,       ///< for a look-up: the schemas that are registered, and their forms
  WHOLE_STORES,           ///< held while stores are made, copied or restored
  CONNECTION_POOL,  ///< under the lock of a single connection, of which a fork takes what it can
  OPEN_DATABASES,   ///< how many there are
  LOG,              ///< held while a line is handed over: a sink may ask for what stands below
  TESTING_HOOK,
  HOST_ROOT,
  COUNT
};

/// Holds a lock for as long as it lives, on one thread, which is not cancelled meanwhile. Works
/// before main, and while the process exits.
class Guard {
 public:
  explicit Guard(Rank rank) noexcept;
  ~Guard();
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

 private:
  const NoCancellation uncancelled_;
  const Rank rank_;
};

}  // namespace ProcessLocks
