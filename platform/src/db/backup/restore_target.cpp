#include "db/backup/restore_target.h"

#include "platform/db_store.h"

#include "db/access_rights.h"
#include "db/backup/statements.h"
#include "db/backup/steps.h"
#include "db/connection_pool.h"
#include "db/last_error.h"
#include "db/waiting.h"

#include <sqlite3.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace DBStore::internal {

namespace {

// The types with another number of changes. Changing it in the database itself would take another
// transaction, which would have to wait for others.
DatabaseHandle Renumbered(const DatabaseHandle& types, int& code) {
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_MEMORY;
  DatabaseHandle copy = OpenFile(":memory:", kFlags, code);
  if (code == SQLITE_OK) {
    PageCopy pages(types.get(), copy.get());
    code = pages.Lock();
    code = code == SQLITE_OK ? pages.Complete() : code;
  }
  if (code == SQLITE_OK) {
    code = sqlite3_exec(copy.get(), Sql::kRenumberTypes, nullptr, nullptr, nullptr);
  }
  return copy;
}

}  // namespace

RestoreTarget::RestoreTarget(const BackupFile& backup, const BackupPart& part,
                             const StoreDirectory& directory)
    : part_(part),
      layout_(*part.layout),
      path_(directory.PathOf(layout_.fixedPath)),
      draft_(path_ + ".new"),
      source_(backup.OpenPart(part)) {
  if (&layout_ == &SchemaStoreLayout()) {
    int code = SQLITE_OK;
    source_ = Renumbered(source_, code);
    if (code != SQLITE_OK) {
      RaiseSqliteError(code, backup.Name(), path_, "numbering the types anew");
    }
  }
  FileIdentity present;
  isNew_ = !IdentifyFile(path_, present) && errno == ENOENT;
  if (isNew_) {
    OpenDraft();
  } else {
    OpenThere();
  }
}

RestoreTarget::~RestoreTarget() {
  copy_.reset();
  database_.reset();
  WriteQueue::Leave(place_);
  if (isNew_) {
    RemoveDraft(draft_);
  }
}

void RestoreTarget::Check(int code, const char* what) const {
  if (code != SQLITE_OK) {
    RaiseSqliteError(code, layout_.fixedPath, path_, what);
  }
}

void RestoreTarget::OpenDraft() {
  MakeDraft(draft_, kDatabaseMode, layout_.fixedPath);
  int code = SQLITE_OK;
  database_ = OpenWithSettings(draft_, true, code);
  Check(code, "making it");
}

void RestoreTarget::OpenThere() {
  struct stat status {};
  if (!IsDatabasesPlace(layout_, path_, status)) {
    RaiseReported();
  }
  if (faccessat(AT_FDCWD, path_.c_str(), W_OK, AT_EACCESS) != 0) {
    Raise(ErrorKind::PERMISSION, SQLITE_READONLY,
          std::string(layout_.fixedPath) + ": " + MissingWriteRight(path_));
  }
  int code = SQLITE_OK;
  database_ = OpenWithSettings(path_, true, code);
  LayoutFound found;
  if (code == SQLITE_OK) {
    code = ReadLayout(database_.get(), layout_, found);
  }
  if (ErrorKindOf(code) == ErrorKind::CORRUPT) {
    // SQLite is to take it for empty. It then knows nothing of a write-ahead log, and needs the file
    // for itself.
    ConnectionPool::Instance().CloseIdle();
    sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_RESET_DATABASE, 1, nullptr);
    std::string ignored;
    code = ReadPragma(database_.get(), "PRAGMA synchronous=FULL", ignored);
    code = code == SQLITE_DONE ? SQLITE_OK : code;
  } else if (code == SQLITE_OK && status.st_size > 0 &&
             found.verdict == LayoutFound::SOMETHING_ELSE) {
    Raise(ErrorKind::OTHER, 0,
          std::string(layout_.fixedPath) +
              ": is a database of something else; move it away, then restore");
  }
  Check(code, "opening it");
  PrepareForPageSize();
}

// SQLite cannot change the size of pages while there is a write-ahead log.
void RestoreTarget::PrepareForPageSize() {
  std::string wanted;
  std::string present;
  if (ReadPragma(source_.get(), Sql::kPageSize, wanted) == SQLITE_OK &&
      ReadPragma(database_.get(), Sql::kPageSize, present) == SQLITE_OK && wanted != present) {
    Check(ReadPragma(database_.get(), "PRAGMA journal_mode=DELETE", present),
          "preparing it for pages of another size");
  }
}

void RestoreTarget::LockWriters() {
  if (isNew_) {
    return;
  }
  Step("locking out writers");
  const int code = sqlite3_exec(database_.get(), Sql::kBeginWriting, nullptr, nullptr, nullptr);
  if (ErrorKindOf(code) != ErrorKind::CORRUPT) {
    Check(code, "locking it for the restore");
    locked_ = true;
  }
}

bool RestoreTarget::Lock(int limit) {
  Step("locking");
  if (std::exchange(locked_, false)) {
    Check(sqlite3_exec(database_.get(), Sql::kEnd, nullptr, nullptr, nullptr), "unlocking it");
  } else if (!isNew_) {
    FileIdentity file;
    IdentifyFile(path_, file);
    if (WriteQueue::ThisThreadWritesBeside(place_, file)) {
      Raise(
          ErrorKind::BUSY, SQLITE_BUSY,
          std::string(layout_.fixedPath) +
              ": this thread has a transaction open on it and would wait for itself; end it first");
    }
    if (!WriteQueue::Enter(place_, file, limit)) {
      return false;
    }
  }
  WaitAtMost(database_.get(), limit);
  copy_ = std::make_unique<PageCopy>(source_.get(), database_.get());
  const int code = copy_->Lock();
  if (ErrorKindOf(code) == ErrorKind::BUSY) {
    return false;
  }
  Check(code, "locking it for the restore");
  return true;
}

void RestoreTarget::RaiseLocked() const {
  RaiseSqliteError(SQLITE_BUSY, layout_.fixedPath, path_, "locking it for the restore");
}

void RestoreTarget::Copy() {
  Check(copy_->CopyAllButLast(), "restoring it");
  if (isNew_) {
    FinishDraft();
  } else {
    Step("flushing");
    // A full disk is to show before anything is decided.
    Check(sqlite3_db_cacheflush(database_.get()), "restoring it");
  }
}

void RestoreTarget::FinishDraft() {
  Check(copy_->Complete(), "making it");
  copy_.reset();
  std::string mode;
  const std::string change = std::string("PRAGMA journal_mode=") + layout_.journalMode;
  Check(ReadPragma(database_.get(), change.c_str(), mode), "making it");
  int keep = 0;
  sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_PERSIST_WAL, &keep);
  database_.reset();
}

void RestoreTarget::Complete() {
  Step("completing");
  if (isNew_) {
    // A log that a lost database left would be taken for this one's.
    RemoveBeside(path_);
    if (!GiveName(draft_, path_)) {
      RaiseSystemError(layout_.fixedPath, "cannot give the database its name", errno);
    }
    mayHaveChanged_ = true;
  } else {
    const int code = copy_->Complete();
    // Only when nothing could be written it is certain that nothing was.
    mayHaveChanged_ = (code & 0xff) != SQLITE_FULL;
    Check(code, "restoring it");
    copy_.reset();
    sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_RESET_DATABASE, 0, nullptr);
    database_.reset();
  }
  WriteQueue::Leave(place_);
}

}  // namespace DBStore::internal
