#include "db/store_connection.h"

#include "platform/host_paths.h"

#include "db/access_rights.h"
#include "db/backup/pending_restore.h"
#include "db/borrowed_statement.h"
#include "db/connection_pool.h"
#include "db/last_error.h"
#include "db/layout.h"
#include "db/testing_hook.h"
#include "db/waiting.h"
#include "process/clock.h"

#include <sqlite3.h>

#include <algorithm>
#include <utility>

namespace DBStore {

StoreConnection::StoreConnection(internal::DatabaseFile file, bool writable,
                                 unsigned rootGeneration) noexcept
    : fixedPath_(internal::CurrentStoreLayout().fixedPath),
      file_(std::move(file)),
      writable_(writable),
      rootGeneration_(rootGeneration),
      forkGeneration_(internal::forkGeneration.load(std::memory_order_relaxed)) {}

StoreConnection::~StoreConnection() {
  statements_.Clear();
}

bool StoreConnection::IsInherited() const noexcept {
  return forkGeneration_ != internal::forkGeneration.load(std::memory_order_relaxed);
}

bool StoreConnection::IsUsable() const {
  if (IsInherited()) {
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                            std::string(fixedPath_) +
                                ": this connection was opened before the process forked; the child "
                                "has to take one of its own");
    return false;
  }
  return true;
}

std::string StoreConnection::Action::Text() const {
  if (sql.empty()) {
    return std::string(verb);
  }
  // Its first words tell a statement from the others; the rest would fill a page.
  constexpr std::size_t kMost = 40;
  const std::size_t end = sql.size() > kMost ? sql.find_last_of(" (\n", kMost) : sql.size();
  std::string words(sql.substr(0, end));
  std::replace(words.begin(), words.end(), '\n', ' ');
  return std::string(verb).append(" \"").append(words).append(end < sql.size() ? "...\"" : "\"");
}

int StoreConnection::Report(int code, const Action& action) {
  internal::ReportSqliteFailure(file_.handle.get(), code, fixedPath_, file_.path, action.Text());
  return code & 0xff;
}

int StoreConnection::RefuseGone(const Action& action) {
  internal::ReportFailure(
      ErrorKind::OTHER, SQLITE_ABORT_ROLLBACK,
      std::string(fixedPath_) + ": " + action.Text() +
          ": the transaction was rolled back after an earlier failure; cancel it "
          "and start again");
  return SQLITE_ABORT_ROLLBACK;
}

int StoreConnection::RefuseWaitingForItself(const Action& action) {
  internal::ReportFailure(
      ErrorKind::BUSY, SQLITE_BUSY,
      std::string(fixedPath_) + ": " + action.Text() +
          ": this thread has a transaction open on another connection and would "
          "wait for itself; end it first, or write through that connection");
  return SQLITE_BUSY;
}

int StoreConnection::RefuseLocked(const Action& action) {
  internal::ReportFailure(ErrorKind::BUSY, SQLITE_BUSY,
                          std::string(fixedPath_) + ": " + action.Text() +
                              ": another thread of this process kept writing for longer than the "
                              "limit");
  return SQLITE_BUSY;
}

int StoreConnection::RefuseReadOnly(const Action& action) {
  internal::ReportFailure(ErrorKind::PERMISSION, SQLITE_READONLY,
                          std::string(fixedPath_) + ": " + action.Text() +
                              ": it was opened for reading; " +
                              internal::MissingWriteRight(file_.path));
  return SQLITE_READONLY;
}

// What is written to a file that has no name any more is lost as soon as it is closed.
int StoreConnection::CheckFile(const Action& action) {
  if (rootGeneration_ != HostPaths::RootGeneration()) {
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                            std::string(fixedPath_) + ": " + action.Text() +
                                ": the host root is another one since this store was opened; open "
                                "it again");
    return SQLITE_MISUSE;
  }
  // What is written between a restore's beginning and its completion would be lost.
  if (!internal::PendingRestore::IsComplete()) {
    return SQLITE_CANTOPEN;
  }
  return internal::CheckStillThere(internal::CurrentStoreLayout(), file_) ? SQLITE_OK
                                                                          : SQLITE_CANTOPEN;
}

int StoreConnection::CheckFileOnceInATick(const Action& action) {
  const std::int64_t now = Clock::CoarseNow();
  if (now == lastLook_ && rootGeneration_ == HostPaths::RootGeneration()) {
    return SQLITE_OK;
  }
  const int code = CheckFile(action);
  lastLook_ = code == SQLITE_OK ? now : 0;
  return code;
}

int StoreConnection::CheckReading(const Action& action) {
  if (IsTransactionGone()) {
    return RefuseGone(action);
  }
  return CheckFileOnceInATick(action);
}

int StoreConnection::EnterQueue(int& limit, const Action& action) {
  if (queued_) {
    return SQLITE_OK;  // the receiver of a writing statement's rows writes, too
  }
  if (file_.readOnly) {
    // SQLite would begin a transaction that can only read.
    return RefuseReadOnly(action);
  }
  if (const int refused = CheckFile(action)) {
    return refused;
  }
  if (internal::WriteQueue::ThisThreadWritesBeside(place_, file_.identity)) {
    return RefuseWaitingForItself(action);
  }
  if (!internal::WriteQueue::Enter(place_, file_.identity, limit)) {
    return RefuseLocked(action);
  }
  queued_ = true;
  LimitWaiting(limit);
  internal::LetOthersWrite();
  return SQLITE_OK;
}

void StoreConnection::LeaveQueue() noexcept {
  queued_ = false;
  internal::NoteWritten();
  internal::WriteQueue::Leave(place_);
}

bool StoreConnection::IsTransactionGone() const noexcept {
  const bool open = sqlite3_get_autocommit(file_.handle.get()) == 0;
  // Open although no level is: it could not be rolled back, or somebody ran a BEGIN of their own.
  return depth_ > 0 ? lost_ || !open : open;
}

void StoreConnection::LimitWaiting(int limit) noexcept {
  if (limit != waitLimit_) {
    internal::WaitAtMost(file_.handle.get(), limit);
    waitLimit_ = limit;
  }
}

internal::CachedStatement* StoreConnection::TakeLocked(std::string_view sql, int limit) {
  LimitWaiting(limit);
  internal::CachedStatement* entry = statements_.Take(sql);
  return entry != nullptr ? entry : PrepareLocked(sql);
}

internal::CachedStatement* StoreConnection::PrepareLocked(std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  const char* tail = nullptr;
  internal::CountPrepare();
  const int code = sqlite3_prepare_v3(file_.handle.get(), sql.data(), static_cast<int>(sql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &statement, &tail);
  if (code != SQLITE_OK) {
    Report(code, Action("preparing", sql));
    return nullptr;
  }
  // What follows a statement would be left out without a word.
  const std::string_view rest = sql.substr(static_cast<std::size_t>(tail - sql.data()));
  if (statement == nullptr || rest.find_first_not_of(" \t\r\n;") != std::string_view::npos) {
    sqlite3_finalize(statement);
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                            std::string(fixedPath_) + ": preparing \"" + std::string(sql) +
                                "\": it is not one statement");
    return nullptr;
  }
  return statements_.Add(sql, statement);
}

int StoreConnection::Run(const char* sql, int limit) {
  const BorrowedStatement statement(*this, sql, limit);
  if (!statement) {
    return sqlite3_extended_errcode(file_.handle.get());
  }
  const int code = sqlite3_step(statement.Get());
  return code == SQLITE_DONE || code == SQLITE_ROW ? SQLITE_OK : code;
}

bool StoreConnection::MakeReusable() noexcept {
  const Guard guard(lock_);
  try {
    if (sqlite3_get_autocommit(file_.handle.get()) == 0) {
      Run("ROLLBACK");
    }
    if (depth_ > 0) {
      depth_ = 0;
      EndTransaction();
    }
    attachments_ = 0;
    if (attached_) {
      Detach();
    }
  } catch (...) {
    return false;
  }
  return sqlite3_get_autocommit(file_.handle.get()) != 0 && !attached_;
}

bool StoreConnection::IsCurrent() const noexcept {
  internal::FileIdentity present;
  return rootGeneration_ == HostPaths::RootGeneration() &&
         internal::IdentifyFile(file_.path, present) && present == file_.identity;
}

void StoreConnection::Close() noexcept {
  // Under the lock: a fork in the middle of it has to notice.
  const Guard guard(lock_);
  internal::WriteQueue::Leave(place_);
  CloseUnshared();
}

void StoreConnection::CloseUnshared() noexcept {
  statements_.Clear();
  file_.handle.reset();
}

void StoreConnection::PauseForFork() noexcept {
  paused_ = lock_.try_lock();
  atRest_ = paused_ && executing_ == 0 && depth_ == 0 &&
            (!file_.handle || sqlite3_get_autocommit(file_.handle.get()) != 0);
}

void StoreConnection::ResumeAfterFork() noexcept {
  if (paused_) {
    paused_ = false;
    lock_.unlock();
  }
}

namespace internal {

StoreConnection* Usable(const ConnectionHandle& connection) {
  if (!connection) {
    ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE, "there is no connection to the store");
    return nullptr;
  }
  return connection->IsUsable() ? connection.get() : nullptr;
}

}  // namespace internal

// A child's inheritance may be held by a thread that the child does not have.
Turn::Turn(const ConnectionHandle& connection) noexcept
    : connection_(connection && !connection->IsInherited() ? connection.get() : nullptr) {
  if (connection_ != nullptr) {
    connection_->TakeTurn();
  }
}

Turn::~Turn() {
  if (connection_ != nullptr) {
    connection_->GiveTurnBack();
  }
}

}  // namespace DBStore
