// The process's connections to the current store.
#pragma once

#include "platform/db_store.h"

#include "db/store_connection.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace DBStore::internal {

/// Keeps idle connections for the next user, and knows those in use.
/// Thread-safe.
///
/// SQLite's locks belong to the process, and a child does not inherit them although it inherits
/// what SQLite remembers of them. So idle connections are closed before a fork; the child closes
/// those that were in use but at rest before it opens its own; and where one was in the middle of
/// something, which a child can neither close nor ignore, the child is refused any connection (see
/// OpenDatabases).
class ConnectionPool {
 public:
  static ConnectionPool& Instance();
  ConnectionPool();  ///< for Instance

  ConnectionHandle Take(bool writable);

  /// Closes those that nobody uses, and with them their locks on the file.
  void CloseIdle() noexcept;

 private:
  class Lifetime;
  static constexpr std::size_t kMaxIdle = 8;

  void LeaveInheritanceBehind();
  std::unique_ptr<StoreConnection> TakeIdle(bool writable);
  ConnectionHandle Lend(std::unique_ptr<StoreConnection> connection);
  void GiveBack(StoreConnection* connection) noexcept;
  void GiveBackInherited(std::unique_ptr<StoreConnection> connection) noexcept;
  void Discard(std::unique_ptr<StoreConnection> connection) noexcept;
  // With the lock held:
  void CloseIdleLocked() noexcept;
  void Forget(const StoreConnection* connection) noexcept;
  void PrepareFork() noexcept;
  void ResumeInParent() noexcept;
  void ResumeInChild() noexcept;

  // All of it under the lock of the process's connection pool.
  std::vector<std::unique_ptr<StoreConnection>> idle_;
  std::vector<StoreConnection*> inUse_;
  bool inheritance_ = false;  // connections of the parent are still to be closed
};

}  // namespace DBStore::internal
