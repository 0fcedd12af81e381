// One connection to the current store: its database, its statements and its transaction.
#pragma once

#include "platform/db_store.h"

#include "db/database_file.h"
#include "db/statement_cache.h"

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>

namespace DBStore {

namespace internal {

/// Grows in the child whenever the process forks.
inline std::atomic<unsigned> forkGeneration{0};

}  // namespace internal

/// Several threads may use a connection; they take turns at each call of the engine, and share its
/// transaction. Failures are reported by the operation that meets them. A connection that was
/// opened before the process forked is never touched in the child by any of the operations: they
/// refuse.
class StoreConnection {
 public:
  StoreConnection(internal::DatabaseFile file, bool writable, unsigned rootGeneration) noexcept;
  ~StoreConnection();
  StoreConnection(const StoreConnection&) = delete;
  StoreConnection& operator=(const StoreConnection&) = delete;

  int Begin();
  int Commit();
  int Cancel();

  /// Null on failure.
  internal::CachedStatement* TakeStatement(std::string_view sql, int limit);
  void GiveBackStatement(internal::CachedStatement* entry) noexcept;
  int Execute(internal::CachedStatement* entry, RowCallback callback, void* context, int limit);

  int ReadKeyValue(const std::string& key, std::string* value);
  int WriteKeyValue(const std::string& key, const std::string& value);

  int AttachSchemaStore();
  int DetachSchemaStore();

  /// Reports and answers false when this is a child's inheritance.
  bool IsUsable() const;

  // For the pool, when nobody holds the connection.
  /// Ends what was left open. False when the connection is not fit for anybody else.
  bool MakeReusable() noexcept;
  bool AsksForWriting() const noexcept { return writable_; }
  bool IsOpen() const noexcept { return file_.handle != nullptr; }
  /// Whether the file it opened is the one that the next user would open.
  bool IsCurrent() const noexcept;
  const internal::FileIdentity& Identity() const noexcept { return file_.identity; }
  void Close() noexcept;

  // For the pool, around a fork. The child may close a connection that was at rest; closing one
  // that was in the middle of something could damage the database.
  bool IsInherited() const noexcept;
  void PauseForFork() noexcept;
  void ResumeAfterFork() noexcept;
  bool WasAtRest() const noexcept { return atRest_; }
  /// Without the lock: nobody else can be using it.
  void CloseUnshared() noexcept;

 private:
  class BorrowedStatement;

  // What follows expects the lock to be held.
  bool IsTransactionGone() const noexcept;
  int RefuseGone(std::string_view action);
  int RefuseWaitingForItself(std::string_view action);
  int RefuseReadOnly(std::string_view action);
  int Report(int code, std::string_view action);
  void LimitWaiting(int limit) noexcept;
  internal::CachedStatement* TakeLocked(std::string_view sql, int limit);
  internal::CachedStatement* PrepareLocked(std::string_view sql);
  int CheckWriting(const internal::CachedStatement& entry);
  int Run(const char* sql);
  void EndTransaction() noexcept;
  int StepThrough(internal::CachedStatement& entry, RowCallback callback, void* context,
                  std::unique_lock<std::mutex>& lock);
  int Detach();

  const char* fixedPath_;
  internal::DatabaseFile file_;
  const bool writable_;
  const unsigned rootGeneration_;
  const unsigned forkGeneration_;

  std::mutex lock_;
  internal::StatementCache statements_;
  int waitLimit_ = kWaitLimit;
  int depth_ = 0;      // levels that were begun and neither committed nor cancelled
  bool lost_ = false;  // an inner level could not be undone: the open levels must not be committed
  int executing_ = 0;  // statements being stepped through, their callbacks included
  int attachments_ = 0;
  bool attached_ = false;  // outlives the attachments while a transaction is open

  bool paused_ = false;
  bool atRest_ = false;
};

namespace internal {

/// A connection that can be used, or null with the reason reported.
StoreConnection* Usable(const ConnectionHandle& connection);

}  // namespace internal
}  // namespace DBStore
