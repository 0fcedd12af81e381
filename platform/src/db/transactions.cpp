// Nested transactions of a connection. SQLite sometimes rolls everything back by itself: it then
// accepts new savepoints and plain statements as if nothing had happened, and commits them at once.
// So the levels that are still open are refused everything but being cancelled.
#include "db/last_error.h"
#include "db/store_connection.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

namespace DBStore {
namespace {

// All levels share a name: SQLite means the innermost of it.
constexpr const char* kBegin = "BEGIN IMMEDIATE";
constexpr const char* kBeginLevel = "SAVEPOINT level";
constexpr const char* kCommitLevel = "RELEASE level";
constexpr const char* kUndoLevel = "ROLLBACK TO level";
constexpr const char* kRollback = "ROLLBACK";

int RefuseWithoutTransaction(const char* path, const char* action) {
  internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                          std::string(path) + ": " + action + ": no transaction was begun");
  return SQLITE_MISUSE;
}

}  // namespace

int StoreConnection::Begin() {
  constexpr const char* kAction = "beginning a transaction";
  const Guard guard(lock_);
  if (depth_ > 0) {
    if (IsTransactionGone()) {
      return RefuseGone(kAction);
    }
    internal::WriteQueue::BeginLevel(place_);
  } else {
    int limit = kWaitLimit;
    if (const int refused = EnterQueue(limit, kAction)) {
      return refused;
    }
  }
  const auto giveUp = [this] {
    if (depth_ > 0) {
      internal::WriteQueue::EndLevel(place_);
    } else {
      LeaveQueue();
    }
  };
  int code = SQLITE_NOMEM;
  try {
    code = Run(depth_ > 0 ? kBeginLevel : kBegin, waitLimit_);
  } catch (...) {
    giveUp();
    throw;
  }
  if (code != SQLITE_OK) {
    giveUp();
    return Report(code, kAction);
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
  const int code = Run(depth_ == 1 ? "COMMIT" : kCommitLevel);
  if (code != SQLITE_OK) {
    return Report(code, kAction);
  }
  EndLevel();
  return SQLITE_OK;
}

int StoreConnection::Cancel() {
  const Guard guard(lock_);
  if (depth_ == 0) {
    return RefuseWithoutTransaction(fixedPath_, "cancelling");
  }
  if (!IsTransactionGone()) {
    const bool undone = depth_ == 1
                            ? Run(kRollback) == SQLITE_OK
                            : Run(kUndoLevel) == SQLITE_OK && Run(kCommitLevel) == SQLITE_OK;
    if (!undone && sqlite3_get_autocommit(file_.handle.get()) == 0) {
      Run(kRollback);
      lost_ = true;
    }
  }
  EndLevel();
  return SQLITE_OK;
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
  if (attached_ && attachments_ == 0) {
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
