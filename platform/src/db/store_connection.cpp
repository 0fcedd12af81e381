#include "db/store_connection.h"

#include "platform/host_paths.h"

#include "db/access_rights.h"
#include "db/backup/pending_restore.h"
#include "db/connection_pool.h"
#include "db/last_error.h"
#include "db/layout.h"
#include "db/statement_words.h"
#include "db/testing_hook.h"
#include "db/waiting.h"
#include "json/utf8.h"
#include "process/clock.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace DBStore {
namespace {

// Also of a file system that became one for reading while the file was open.
bool IsReadOnlyError(sqlite3* database, int code) noexcept {
  return (code & 0xff) == SQLITE_READONLY ||
         ((code & 0xff) == SQLITE_IOERR && sqlite3_system_errno(database) == EROFS);
}

}  // namespace

StoreConnection::StoreConnection(internal::DatabaseFile file, bool writable,
                                 unsigned rootGeneration) noexcept
    : fixedPath_(internal::CurrentStoreLayout().fixedPath),
      file_(std::move(file)),
      writable_(writable),
      rootGeneration_(rootGeneration),
      forkGeneration_(internal::forkGeneration.load(std::memory_order_relaxed)) {}

StoreConnection::~StoreConnection() {
  CloseUnshared();
}

bool StoreConnection::IsInherited() const noexcept {
  return forkGeneration_ != internal::forkGeneration.load(std::memory_order_relaxed);
}

bool StoreConnection::IsUsable() const noexcept {
  if (IsInherited()) {
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                            {fixedPath_,
                             ": this connection was opened before the process forked; the child "
                             "has to take one of its own"});
    return false;
  }
  return true;
}

StoreConnection::Action::Words StoreConnection::Action::Text() const noexcept {
  constexpr std::size_t kMost = 64;
  Words words;
  const std::string_view shown = Json::Utf8::Fitting(name, kMost);
  const internal::StatementWords statement(sql);
  const auto length = [](std::string_view text) { return static_cast<int>(text.size()); };
  if (!sql.empty()) {
    std::snprintf(words.text, sizeof words.text, "%.*s %s%.*s", length(verb), verb.data(),
                  statement.does, length(statement.table), statement.table.data());
  } else if (!name.empty()) {
    std::snprintf(words.text, sizeof words.text, "%.*s \"%.*s%s\"", length(verb), verb.data(),
                  length(shown), shown.data(), shown.size() < name.size() ? "..." : "");
  } else {
    std::snprintf(words.text, sizeof words.text, "%.*s", length(verb), verb.data());
  }
  return words;
}

int StoreConnection::Report(int code, const Action& action) noexcept {
  if (IsReadOnlyError(file_.handle.get(), code)) {
    metReadOnly_ = true;
    opensAnew_ = writable_;
  }
  internal::ReportSqliteFailure(file_.handle.get(), code, fixedPath_, file_.path,
                                action.Text().text);
  return code & 0xff;
}

int StoreConnection::RefuseGone(const Action& action) noexcept {
  internal::ReportFailure(
      ErrorKind::OTHER, SQLITE_ABORT_ROLLBACK,
      {fixedPath_, ": ", action.Text().text,
       broken_ ? ": an earlier transaction could not be undone, or the store not be opened anew; "
                 "open it again"
               : ": the transaction was rolled back after an earlier failure; cancel it "
                 "and start again"});
  return SQLITE_ABORT_ROLLBACK;
}

int StoreConnection::RefuseWaitingForItself(const Action& action) {
  internal::ReportFailure(ErrorKind::BUSY, SQLITE_BUSY,
                          {fixedPath_, ": ", action.Text().text,
                           ": this thread has a transaction open on another connection and would "
                           "wait for itself; end it first, or write through that connection"});
  return SQLITE_BUSY;
}

int StoreConnection::RefuseLocked(const Action& action) {
  internal::ReportFailure(ErrorKind::BUSY, SQLITE_BUSY,
                          {fixedPath_, ": ", action.Text().text,
                           ": another thread of this process kept writing for longer than the "
                           "limit"});
  return SQLITE_BUSY;
}

int StoreConnection::RefuseReadOnly(const Action& action) {
  opensAnew_ = writable_;
  internal::ReportFailure(ErrorKind::PERMISSION, SQLITE_READONLY,
                          {fixedPath_, ": ", action.Text().text, ": it was opened for reading; ",
                           internal::MissingWriteRight(file_.path)});
  return SQLITE_READONLY;
}

// What is written to a file that has no name any more is lost as soon as it is closed.
int StoreConnection::CheckFile(const Action& action) {
  if (rootGeneration_ != HostPaths::RootGeneration()) {
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                            {fixedPath_, ": ", action.Text().text,
                             ": the host root is another one since this store was opened; open "
                             "it again"});
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
  if (const int code = OpenAnew()) {
    return code;
  }
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
  if (broken_) {
    return true;
  }
  const bool open = sqlite3_get_autocommit(file_.handle.get()) == 0;
  // Open although no level is: it could not be rolled back, or somebody ran a BEGIN of their own.
  return depth_ > 0 ? lost_ || !open : open;
}

void StoreConnection::LimitWaiting(int limit) noexcept {
  if (limit != waitLimit_ && IsOpen()) {
    internal::WaitAtMost(file_.handle.get(), limit);
    waitLimit_ = limit;
  }
}

internal::CachedStatement* StoreConnection::TakeLocked(std::string_view sql, int limit) {
  if (OpenAnew() != SQLITE_OK) {
    return nullptr;
  }
  if (broken_) {
    RefuseGone(Action::Of("preparing", sql));
    return nullptr;
  }
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
    Report(code, Action::Of("preparing", sql));
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

bool StoreConnection::MakeReusable() noexcept {
  const Guard guard(lock_);
  held_.Clear();
  if (!broken_ && depth_ > 0 && sqlite3_get_autocommit(file_.handle.get()) == 0) {
    RollBack();
  }
  if (depth_ > 0) {
    depth_ = 0;
    EndTransaction();
  }
  attachments_ = 0;
  if (attached_ && !broken_) {
    Detach();
  }
  return !broken_ && sqlite3_get_autocommit(file_.handle.get()) != 0 && !attached_ &&
         !metReadOnly_ && MayWriteOrHasNoRight();
}

// What came out read-only, although it asked for writing and the user's rights allow it, met
// something that passes: a file system mounted for reading, an open that failed once.
bool StoreConnection::MayWriteOrHasNoRight() const noexcept {
  return !writable_ || !file_.readOnly || internal::RightsRefuseWriting(file_.path);
}

// A connection may be held for the life of a process: what kept it from writing may have passed.
int StoreConnection::OpenAnew() {
  if (!opensAnew_ || depth_ > 0 || executing_ != 0 || attached_ || !statements_.AreIdle()) {
    return SQLITE_OK;
  }
  if (rootGeneration_ != HostPaths::RootGeneration() || !internal::CanBeWritten(file_.path)) {
    opensAnew_ = broken_;  // a closed one goes on trying
    return SQLITE_OK;
  }
  // The old one first: as long as it is open, its log stays one for reading.
  CloseUnshared();
  waitLimit_ = kWaitLimit;
  metReadOnly_ = false;
  broken_ = true;
  internal::DatabaseFile file = internal::OpenDatabase(internal::CurrentStoreLayout(), true);
  if (!file || !internal::CheckStillThere(internal::CurrentStoreLayout(), file_)) {
    return SQLITE_CANTOPEN;
  }
  broken_ = false;
  opensAnew_ = false;
  file_ = std::move(file);
  return SQLITE_OK;
}

bool StoreConnection::IsCurrent() const noexcept {
  internal::FileIdentity present;
  return rootGeneration_ == HostPaths::RootGeneration() &&
         internal::IdentifyFile(file_.path, present) && present == file_.identity &&
         MayWriteOrHasNoRight();
}

void StoreConnection::Close() noexcept {
  // Under the lock: a fork in the middle of it has to notice.
  const Guard guard(lock_);
  internal::WriteQueue::Leave(place_);
  CloseUnshared();
}

void StoreConnection::CloseUnshared() noexcept {
  statements_.Clear();
  held_.Close();
  transaction_.Clear();
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

StoreConnection* Usable(const ConnectionHandle& connection) noexcept {
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
