// Nested transactions of a connection. SQLite sometimes rolls everything back by itself: it then
// accepts new savepoints and plain statements as if nothing had happened, and commits them at once.
// So the levels that are still open are refused everything but being cancelled.
#include "db/last_error.h"
#include "db/store_connection.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

namespace DBStore {
namespace {

using internal::TransactionStep;

int RefuseWithoutTransaction(const char* path, const char* action) noexcept {
  internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                          {path, ": ", action, ": no transaction was begun"});
  return SQLITE_MISUSE;
}

}  // namespace

int StoreConnection::Begin() {
  constexpr const char* kAction = "beginning a transaction";
  const Guard guard(lock_);
  if (const int code = OpenAnew()) {
    return code;
  }
  if (broken_ || (depth_ > 0 && IsTransactionGone())) {
    return RefuseGone(kAction);
  }
  if (depth_ == 0) {
    // What undoes the transaction is made ready first.
    if (const int code = transaction_.Prepare(file_.handle.get()); code != SQLITE_OK) {
      return Report(code, kAction);
    }
    int limit = kWaitLimit;
    if (const int refused = EnterQueue(limit, kAction)) {
      return refused;
    }
  } else {
    internal::WriteQueue::BeginLevel(place_);
  }
  const int code =
      transaction_.Run(depth_ > 0 ? TransactionStep::BEGIN_LEVEL : TransactionStep::BEGIN);
  if (code != SQLITE_OK) {
    const int status = Report(code, kAction);
    if (depth_ > 0) {
      internal::WriteQueue::EndLevel(place_);
    } else {
      LeaveQueue();
    }
    return status;
  }
  ++depth_;
  return SQLITE_OK;
}

int StoreConnection::Commit() {
  constexpr const char* kAction = "committing";
  const Guard guard(lock_);
  if (depth_ == 0) {
    return RefuseWithoutTransaction(fixedPath_, kAction);
  }
  if (IsTransactionGone()) {
    return RefuseGone(kAction);
  }
  LimitWaiting(kWaitLimit);
  const int code =
      transaction_.Run(depth_ == 1 ? TransactionStep::COMMIT : TransactionStep::COMMIT_LEVEL);
  if (code != SQLITE_OK) {
    return Report(code, kAction);
  }
  EndLevel();
  return SQLITE_OK;
}

int StoreConnection::Cancel() noexcept {
  const Guard guard(lock_);
  if (depth_ == 0) {
    return RefuseWithoutTransaction(fixedPath_, "cancelling");
  }
  // An inner level that cannot be undone alone (SQLite takes memory for that) takes the others with
  // it.
  if (!IsTransactionGone() && (depth_ == 1 || !UndoLevel())) {
    RollBack();
    lost_ = true;
  }
  EndLevel();
  return SQLITE_OK;
}

bool StoreConnection::UndoLevel() noexcept {
  return transaction_.Run(TransactionStep::UNDO_LEVEL) == SQLITE_OK &&
         transaction_.Run(TransactionStep::COMMIT_LEVEL) == SQLITE_OK;
}

void StoreConnection::RollBack() noexcept {
  const int code = transaction_.Run(TransactionStep::ROLLBACK);
  if (sqlite3_get_autocommit(file_.handle.get()) != 0) {
    return;
  }
  Report(code, "undoing a transaction");
  broken_ = true;
  opensAnew_ = false;
  if (executing_ == 0) {
    // Gives up its locks, and undoes what it has not committed.
    LeaveQueue();
    statements_.Finalise();
    transaction_.Clear();
    file_.handle.reset();
  }
}

bool StoreConnection::IsInTransaction() {
  const Guard guard(lock_);
  return depth_ > 0;
}

void StoreConnection::EndLevel() noexcept {
  if (--depth_ == 0) {
    EndTransaction();
  } else {
    internal::WriteQueue::EndLevel(place_);
  }
}

void StoreConnection::EndTransaction() noexcept {
  lost_ = false;
  LeaveQueue();
  if (attached_ && attachments_ == 0 && IsOpen()) {
    Detach();
  }
}

int BeginTransaction(const ConnectionHandle& connection) {
  StoreConnection* const usable = internal::Usable(connection);
  if (usable == nullptr) {
    return SQLITE_MISUSE;
  }
  const int status = internal::AskHook(testing::Operation::BEGIN);
  return status != 0 ? status : usable->Begin();
}

int CommitTransaction(const ConnectionHandle& connection) {
  StoreConnection* const usable = internal::Usable(connection);
  if (usable == nullptr) {
    return SQLITE_MISUSE;
  }
  const int status = internal::AskHook(testing::Operation::COMMIT);
  return status != 0 ? status : usable->Commit();
}

int CancelTransaction(const ConnectionHandle& connection) {
  StoreConnection* const usable = internal::Usable(connection);
  if (usable == nullptr) {
    return SQLITE_MISUSE;
  }
  const int status = internal::AskHook(testing::Operation::CANCEL);
  return status != 0 ? status : usable->Cancel();
}

bool IsInTransaction(const ConnectionHandle& connection) noexcept {
  return connection && !connection->IsInherited() && connection->IsInTransaction();
}

}  // namespace DBStore
