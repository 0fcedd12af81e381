// One connection to the current store: its database, its statements and its transaction.
#pragma once

#include "platform/db_store.h"

#include "db/database_file.h"
#include "db/held_rows.h"
#include "db/recursive_lock.h"
#include "db/statement_cache.h"
#include "db/transaction_statements.h"
#include "db/write_queue.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace DBStore {

namespace internal {

/// Grows in the child whenever the process forks.
inline std::atomic<unsigned> forkGeneration{0};

}  // namespace internal

/// Several threads may use a connection; they take turns, one operation each, and share its
/// transaction. Failures are reported by the operation that meets them. A connection that was
/// opened before the process forked is never touched in the child by any of the operations: they
/// refuse. So do those on a store whose file is not the one at its path any more.
class StoreConnection {
 public:
  StoreConnection(internal::DatabaseFile file, bool writable, unsigned rootGeneration) noexcept;
  ~StoreConnection();
  StoreConnection(const StoreConnection&) = delete;
  StoreConnection& operator=(const StoreConnection&) = delete;

  /// Keeps the other threads out until it is given back. A thread may take it several times.
  void TakeTurn() noexcept { lock_.lock(); }
  void GiveTurnBack() noexcept { lock_.unlock(); }

  int Begin();
  int Commit();
  int Cancel() noexcept;
  bool IsInTransaction();

  /// Null on failure.
  internal::CachedStatement* TakeStatement(std::string_view sql, int limit);
  void GiveBackStatement(internal::CachedStatement* entry) noexcept;
  int Execute(internal::CachedStatement* entry, RowCallback callback, void* context, int limit);

  MadeOfRow FindHeld(const RowQuery& query) noexcept;
  bool IsWorthHolding(const RowQuery& query) noexcept;
  void Hold(const RowQuery& query, MadeOfRow made, std::size_t size) noexcept;

  int ReadKeyValue(const std::string& key, std::string* value);
  int WriteKeyValue(const std::string& key, const std::string& value);

  int AttachSchemaStore();
  int DetachSchemaStore();

  /// Reports and answers false when this is a child's inheritance.
  bool IsUsable() const noexcept;

  // For the pool, when nobody holds the connection.
  /// Ends what was left open. False when the connection is not fit for anybody else.
  bool MakeReusable() noexcept;
  bool AsksForWriting() const noexcept { return writable_; }
  bool IsOpen() const noexcept { return file_.handle != nullptr; }
  /// Whether the file it opened is the one that the next user would open, for writing where the next
  /// user may write it.
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
  /// What was tried, for messages; put into words only when there is something to say.
  struct Action {
    Action(const char* what) : verb(what) {}
    Action(const char* what, std::string_view quoted) : verb(what), name(quoted) {}
    static Action Of(const char* what, std::string_view sql) {
      Action action(what);
      action.sql = sql;
      return action;
    }
    /// In as many words as there is room for: failures are reported where there is no memory.
    struct Words {
      char text[128];
    };
    Words Text() const noexcept;

    std::string_view verb;
    std::string_view name = {};
    std::string_view sql = {};  // nothing that people are shown
  };
  class BorrowedStatement;
  class QueuedWrite;
  using Guard = std::lock_guard<internal::RecursiveLock>;

  // What follows expects the lock to be held.
  bool IsTransactionGone() const noexcept;
  bool MayWriteOrHasNoRight() const noexcept;
  int OpenAnew();
  int RefuseGone(const Action& action) noexcept;
  int RefuseWaitingForItself(const Action& action);
  int RefuseReadOnly(const Action& action);
  int RefuseLocked(const Action& action);
  int CheckFile(const Action& action);
  int CheckFileOnceInATick(const Action& action);
  int Report(int code, const Action& action) noexcept;
  void LimitWaiting(int limit) noexcept;
  internal::CachedStatement* TakeLocked(std::string_view sql, int limit);
  internal::CachedStatement* PrepareLocked(std::string_view sql);
  int CheckReading(const Action& action);
  bool IsBetweenOperations() const noexcept;
  /// Waits for this connection's turn to write, up to the limit, of which it leaves the rest.
  int EnterQueue(int& limit, const Action& action);
  void LeaveQueue() noexcept;
  bool UndoLevel() noexcept;
  void RollBack() noexcept;
  void EndLevel() noexcept;
  void EndTransaction() noexcept;
  int StepThrough(internal::CachedStatement& entry, RowCallback callback, void* context);
  int Detach() noexcept;

  const char* fixedPath_;
  internal::DatabaseFile file_;
  const bool writable_;
  const unsigned rootGeneration_;
  const unsigned forkGeneration_;

  internal::RecursiveLock lock_;
  internal::WriteQueue::Place place_;
  bool queued_ = false;
  internal::StatementCache statements_;
  internal::HeldRows held_;
  internal::TransactionStatements transaction_;
  int waitLimit_ = kWaitLimit;
  int depth_ = 0;      // levels that were begun and neither committed nor cancelled
  bool lost_ = false;  // an inner level could not be undone: the open levels must not be committed
  bool broken_ = false;  // a transaction could not be undone at all: nobody may use it any more
  bool metReadOnly_ = false;  // a write was refused that should not have been: never lent again
  bool opensAnew_ = false;    // the next use looks whether writing is possible by now
  int executing_ = 0;         // statements being stepped through, their callbacks included
  int attachments_ = 0;
  bool attached_ = false;  // outlives the attachments while a transaction is open

  std::int64_t lastLook_ = 0;  // at the file, by the coarse clock

  bool paused_ = false;
  bool atRest_ = false;
};

namespace internal {

/// A connection that can be used, or null with the reason reported.
StoreConnection* Usable(const ConnectionHandle& connection) noexcept;

}  // namespace internal
}  // namespace DBStore
