// The process's connections to the current store.
#pragma once

#include "platform/db_store.h"

#include "db/store_connection.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace DBStore::internal {

/// Keeps idle connections for the next user, knows those in use, and who of them writes.
/// Thread-safe.
///
/// SQLite's locks belong to the process, and a child does not inherit them although it inherits
/// what SQLite remembers of them. So idle connections are closed before a fork; the child closes
/// those that were in use but at rest before it opens its own; and where one was in the middle of
/// something, which a child can neither close nor ignore, the child is refused any connection.
class ConnectionPool {
 public:
  static ConnectionPool& Instance();

  ConnectionHandle Take(bool writable);
  void CloseIdle() noexcept;

  void WriteBegun(const StoreConnection& connection);
  void WriteEnded(const StoreConnection& connection) noexcept;
  /// Whether the calling thread began a transaction on another connection to the same file: waiting
  /// for its end would be waiting for oneself.
  bool ThisThreadWritesBeside(const StoreConnection& connection);

 private:
  static constexpr std::size_t kMaxIdle = 8;

  struct Writer {
    const StoreConnection* connection;
    unsigned thread;
  };

  ConnectionPool();
  bool LeaveInheritanceBehind();
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

  std::mutex lock_;
  std::vector<std::unique_ptr<StoreConnection>> idle_;
  std::vector<StoreConnection*> inUse_;
  std::vector<Writer> writers_;
  std::atomic<std::size_t> writerCount_{0};
  bool childIsRefused_ = false;  // were the process to fork now
  bool inheritance_ = false;     // connections of the parent are still to be closed
  bool forkedMidway_ = false;    // and one of them cannot be
};

}  // namespace DBStore::internal
