#include "db/store_connection.h"

#include "platform/host_paths.h"

#include "db/access_rights.h"
#include "db/borrowed_statement.h"
#include "db/connection_pool.h"
#include "db/last_error.h"
#include "db/layout.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

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

int StoreConnection::Report(int code, std::string_view action) {
  internal::ReportSqliteFailure(file_.handle.get(), code, fixedPath_, file_.path, action);
  return code & 0xff;
}

int StoreConnection::RefuseGone(std::string_view action) {
  internal::ReportFailure(
      ErrorKind::OTHER, SQLITE_ABORT_ROLLBACK,
      std::string(fixedPath_) + ": " + std::string(action) +
          ": the transaction was rolled back after an earlier failure; cancel it "
          "and start again");
  return SQLITE_ABORT_ROLLBACK;
}

int StoreConnection::RefuseWaitingForItself(std::string_view action) {
  internal::ReportFailure(
      ErrorKind::BUSY, SQLITE_BUSY,
      std::string(fixedPath_) + ": " + std::string(action) +
          ": this thread has a transaction open on another connection and would "
          "wait for itself; end it first, or write through that connection");
  return SQLITE_BUSY;
}

int StoreConnection::RefuseReadOnly(std::string_view action) {
  internal::ReportFailure(ErrorKind::PERMISSION, SQLITE_READONLY,
                          std::string(fixedPath_) + ": " + std::string(action) +
                              ": it was opened for reading; " +
                              internal::MissingWriteRight(file_.path));
  return SQLITE_READONLY;
}

bool StoreConnection::IsTransactionGone() const noexcept {
  const bool open = sqlite3_get_autocommit(file_.handle.get()) == 0;
  // Open although no level is: it could not be rolled back, or somebody ran a BEGIN of their own.
  return depth_ > 0 ? lost_ || !open : open;
}

void StoreConnection::LimitWaiting(int limit) noexcept {
  if (limit != waitLimit_) {
    sqlite3_busy_timeout(file_.handle.get(), limit);
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
    Report(code, "preparing \"" + std::string(sql) + "\"");
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

int StoreConnection::Run(const char* sql) {
  const BorrowedStatement statement(*this, sql);
  if (!statement) {
    return sqlite3_extended_errcode(file_.handle.get());
  }
  const int code = sqlite3_step(statement.Get());
  return code == SQLITE_DONE || code == SQLITE_ROW ? SQLITE_OK : code;
}

bool StoreConnection::MakeReusable() noexcept {
  const std::lock_guard<std::mutex> guard(lock_);
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
  const std::lock_guard<std::mutex> guard(lock_);
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
}  // namespace DBStore
