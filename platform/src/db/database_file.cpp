#include "db/database_file.h"

#include "platform/db_store.h"
#include "platform/host_paths.h"
#include "platform/logger.h"

#include "db/access_rights.h"
#include "db/backup/pending_restore.h"
#include "db/last_error.h"
#include "db/layout_parts.h"
#include "db/open_databases.h"
#include "db/waiting.h"

#include <climits>
#include <sqlite3.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace DBStore::internal {
namespace {

// A log that one huge write made long shrinks to this again.
constexpr const char* kConnectionSettings =
    "PRAGMA synchronous=FULL;"
    "PRAGMA journal_size_limit=4194304;";

// A file that is replaced while it is being opened is opened anew this often.
constexpr int kOpenAttempts = 5;

std::string ErrnoText(int error) {
  return std::error_code(error, std::generic_category()).message();
}

void Report(ErrorKind kind, int code, const Layout& layout, const std::string& what) {
  ReportFailure(kind, code, std::string(layout.fixedPath) + ": " + what);
}

void ReportUnreachable(const Layout& layout, const std::string& path, int error) {
  if (error == ENOENT || error == ENOTDIR) {
    std::string what = "there is no such database; `tarnctl init` makes it, or ";
    Report(ErrorKind::MISSING, SQLITE_CANTOPEN, layout, what.append(kRestoreIt));
  } else if (error == EACCES || error == EPERM) {
    Report(ErrorKind::PERMISSION, SQLITE_CANTOPEN, layout, MissingReadRight(path));
  } else {
    Report(ErrorKind::OTHER, SQLITE_CANTOPEN, layout, "cannot be reached: " + ErrnoText(error));
  }
}

// Whether it is worth giving the file to SQLite, which would take an empty file for an empty
// database and names hardly any of these reasons.
bool LooksLikeDatabase(const Layout& layout, const std::string& path) {
  struct stat status {};
  if (!IsDatabasesPlace(layout, path, status)) {
    return false;
  }
  if (faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0) {
    ReportUnreachable(layout, path, errno);
    return false;
  }
  if (status.st_size == 0) {
    std::string what = "is empty: its content was lost; ";
    what.append(kRestoreIt).append(", or move it away and run `tarnctl init`");
    Report(ErrorKind::CORRUPT, SQLITE_NOTADB, layout, what);
    return false;
  }
  return true;
}

int Harden(sqlite3* database) {
  WaitAtMost(database, kWaitLimit);
  int code = sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  if (code == SQLITE_OK) {
    code = sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  }
  return code;
}

void KeepWriteAheadLog(sqlite3* database) {
  int keep = 1;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_PERSIST_WAL, &keep);
}

void ReportOpenFailure(sqlite3* database, int code, const Layout& layout, const std::string& path,
                       const char* action) {
  if (ErrorKindOf(code) == ErrorKind::PERMISSION) {
    // A log without its index, or neither: somebody removed them, and making them takes a writer.
    Report(ErrorKind::PERMISSION, code, layout,
           std::string("cannot be read before a user who may write it has opened it once: ") +
               MissingWriteRight(path));
    return;
  }
  const int error = sqlite3_system_errno(database);
  if ((code & 0xff) == SQLITE_CANTOPEN && (error == EACCES || error == EPERM)) {
    Report(ErrorKind::PERMISSION, code, layout, MissingReadRight(path));
    return;
  }
  ReportSqliteFailure(database, code, layout.fixedPath, path, action);
}

bool IsReadable(const Layout& layout, const LayoutFound& found) {
  switch (found.verdict) {
    case LayoutFound::READABLE:
      return true;
    case LayoutFound::SOMETHING_ELSE:
      Report(ErrorKind::CORRUPT, SQLITE_NOTADB, layout,
             "is a database of something else (application " + std::to_string(found.applicationId) +
                 "); move it away, then restore the right one or run `tarnctl init`");
      return false;
    case LayoutFound::NEWER:
      Report(ErrorKind::NEWER, SQLITE_CANTOPEN, layout,
             "has layout version " + std::to_string(found.version) + ", this library knows up to " +
                 std::to_string(layout.version) + "; upgrade the library");
      return false;
    case LayoutFound::UNKNOWN:
      break;
  }
  std::string what = "has unknown layout version ";
  what.append(std::to_string(found.version)).append("; ").append(kRestoreIt);
  Report(ErrorKind::CORRUPT, SQLITE_NOTADB, layout, what);
  return false;
}

void KeepJournalMode(sqlite3* database, const Layout& layout) {
  std::string mode;
  if (ReadPragma(database, "PRAGMA journal_mode", mode) != SQLITE_OK ||
      mode == layout.journalMode) {
    return;
  }
  const std::string change = std::string("PRAGMA journal_mode=") + layout.journalMode;
  std::string changed;
  if (ReadPragma(database, change.c_str(), changed) != SQLITE_OK || changed != layout.journalMode) {
    CSLogger::Log(CSLogger::kProblem, "%s: journal mode is %s and cannot be set to %s now",
                  layout.fixedPath, mode.c_str(), layout.journalMode);
  }
}

struct Opening {
  DatabaseHandle handle;
  int code = SQLITE_OK;
  const char* action = "opening it";
  LayoutFound found;
};

Opening OpenAndRead(const Layout& layout, const std::string& path, bool writable) {
  Opening opening;
  opening.handle = OpenWithSettings(path, writable, opening.code);
  if (opening.code == SQLITE_OK) {
    opening.action = "reading it";
    opening.code = ReadLayout(opening.handle.get(), layout, opening.found);
  }
  return opening;
}

DatabaseHandle OpenOnce(const Layout& layout, const std::string& path, const FileIdentity& identity,
                        bool writable) {
  Opening opening = OpenAndRead(layout, path, writable);
  if (!writable && ErrorKindOf(opening.code) == ErrorKind::PERMISSION) {
    // A writer was killed: only who may write can take back what it left.
    OpenAndRead(layout, path, true);
    opening = OpenAndRead(layout, path, false);
  }
  DatabaseHandle handle = std::move(opening.handle);
  if (opening.code != SQLITE_OK) {
    ReportOpenFailure(handle.get(), opening.code, layout, path, opening.action);
    return nullptr;
  }
  if (!IsReadable(layout, opening.found) ||
      !HasItsParts(handle.get(), layout, opening.found.version, identity)) {
    return nullptr;
  }
  if (sqlite3_db_readonly(handle.get(), "main") == 0) {
    KeepJournalMode(handle.get(), layout);
  }
  return handle;
}

// Whether the index of the log could be opened for reading only, which nothing else tells before the
// first write: every connection of the process shares it, for as long as there is one.
bool IsLogForReading(sqlite3* database) {
  std::string mode;
  sqlite3_file* file = nullptr;
  // Where there is no log, asking for its index would make one.
  if (ReadPragma(database, "PRAGMA journal_mode", mode) != SQLITE_OK || mode != "wal" ||
      sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
      file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2) {
    return false;
  }
  constexpr int kIndexBlock = 32768;
  void volatile* first = nullptr;
  return (file->pMethods->xShmMap(file, 0, kIndexBlock, 0, &first) & 0xff) == SQLITE_READONLY;
}

// SQLite opens for reading what it cannot open for writing, whatever the reason.
bool IsForReading(sqlite3* database) {
  return sqlite3_db_readonly(database, "main") != 0 || IsLogForReading(database);
}

}  // namespace

void DatabaseCloser::operator()(sqlite3* database) const noexcept {
  sqlite3_close_v2(database);
  OpenDatabases::Leave();
}

DatabaseHandle OpenFile(const char* path, int flags, int& code) noexcept {
  sqlite3* database = nullptr;
  OpenDatabases::Enter();
  code = sqlite3_open_v2(
      path, &database,
      flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_URI,
      nullptr);
  if (database == nullptr) {
    OpenDatabases::Leave();
  }
  return DatabaseHandle(database);
}

DatabaseHandle OpenWithSettings(const std::string& path, bool writable, int& code) noexcept {
  DatabaseHandle handle =
      OpenFile(path.c_str(), writable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY, code);
  if (code == SQLITE_OK) {
    KeepWriteAheadLog(handle.get());
    code = Harden(handle.get());
  }
  if (code == SQLITE_OK) {
    code = sqlite3_exec(handle.get(), kConnectionSettings, nullptr, nullptr, nullptr);
  }
  return handle;
}

int ReadPragma(sqlite3* database, const char* pragma, std::string& value) {
  sqlite3_stmt* statement = nullptr;
  int code = sqlite3_prepare_v2(database, pragma, -1, &statement, nullptr);
  if (code == SQLITE_OK && (code = sqlite3_step(statement)) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(statement, 0);
    value = text == nullptr ? "" : reinterpret_cast<const char*>(text);
    // A number takes memory to become a text, and is NULL from then on where there is none.
    code = text == nullptr && sqlite3_errcode(database) == SQLITE_NOMEM ? SQLITE_NOMEM : SQLITE_OK;
  }
  sqlite3_finalize(statement);
  return code;
}

int ReadLayout(sqlite3* database, const Layout& layout, LayoutFound& found) {
  std::string application;
  std::string version;
  int code = ReadPragma(database, "PRAGMA application_id", application);
  if (code == SQLITE_OK) {
    code = ReadPragma(database, "PRAGMA user_version", version);
  }
  if (code != SQLITE_OK) {
    return code;
  }
  found.applicationId = static_cast<int>(std::strtol(application.c_str(), nullptr, 10));
  found.version = static_cast<int>(std::strtol(version.c_str(), nullptr, 10));
  found.verdict = found.applicationId != layout.applicationId ? LayoutFound::SOMETHING_ELSE
                  : found.version > layout.version            ? LayoutFound::NEWER
                  : found.version < layout.oldest             ? LayoutFound::UNKNOWN
                                                              : LayoutFound::READABLE;
  return SQLITE_OK;
}

bool IsDatabasesPlace(const Layout& layout, const std::string& path, struct stat& status) {
  if (lstat(path.c_str(), &status) != 0) {
    ReportUnreachable(layout, path, errno);
    return false;
  }
  if (S_ISDIR(status.st_mode)) {
    Report(ErrorKind::CORRUPT, SQLITE_CANTOPEN, layout,
           "is a directory, not a database; move it away, then restore the database or run "
           "`tarnctl init`");
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    Report(ErrorKind::CORRUPT, SQLITE_CANTOPEN, layout,
           S_ISLNK(status.st_mode)
               ? "is a symbolic link, which is not followed; put the database itself there"
               : "is a special file, not a database; put the database itself there");
    return false;
  }
  return true;
}

bool IdentifyFile(const std::string& path, FileIdentity& identity) noexcept {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return false;
  }
  identity = {status.st_dev, status.st_ino, status.st_mode, status.st_uid, status.st_gid};
  return true;
}

std::string CanonicalPath(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  char directory[PATH_MAX];
  if (realpath(path.substr(0, slash + 1).c_str(), directory) == nullptr) {
    return std::string();
  }
  std::string canonical(directory);
  if (canonical != "/") {
    canonical += '/';
  }
  return canonical.append(path, slash + 1, std::string::npos);
}

DatabaseFile OpenDatabase(const Layout& layout, bool writable) {
  return PendingRestore::IsComplete() ? OpenDatabaseAsItIs(layout, writable) : DatabaseFile();
}

DatabaseFile OpenDatabaseAsItIs(const Layout& layout, bool writable) {
  DatabaseFile file;
  if (OpenDatabases::AreOutOfReach()) {
    Report(ErrorKind::MISUSE, SQLITE_MISUSE, layout, OpenDatabases::kOutOfReach);
    return file;
  }
  file.path = HostPaths::Resolve(layout.fixedPath);
  bool failedToWrite = false;
  for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
    const std::string path = CanonicalPath(file.path);
    if (path.empty()) {
      ReportUnreachable(layout, file.path, errno);
      return file;
    }
    if (!LooksLikeDatabase(layout, path)) {
      return file;
    }
    if (!IdentifyFile(file.path, file.identity)) {
      ReportUnreachable(layout, file.path, errno);
      return file;
    }
    DatabaseHandle handle = OpenOnce(layout, path, file.identity, writable);
    if (!handle) {
      return file;
    }
    FileIdentity afterwards;
    if (IdentifyFile(file.path, afterwards) && afterwards == file.identity) {
      const bool isForReading = writable && IsForReading(handle.get());
      if (isForReading && CanBeWritten(path) && CanBeWritten(path + "-shm")) {
        // It would stay so for everybody in this process, for as long as it is open.
        handle.reset();
        failedToWrite = true;
        continue;
      }
      file.readOnly = !writable || isForReading;
      file.handle = std::move(handle);
      return file;
    }
  }
  if (failedToWrite) {
    Report(ErrorKind::OTHER, SQLITE_CANTOPEN, layout,
           "cannot be opened for writing, although its rights allow it; try again");
    return file;
  }
  Report(ErrorKind::OTHER, SQLITE_CANTOPEN, layout,
         "is being replaced again and again; try again later");
  return file;
}

bool CheckStillThere(const Layout& layout, const DatabaseFile& file) {
  FileIdentity present;
  if (!IdentifyFile(file.path, present)) {
    ReportUnreachable(layout, file.path, errno);
    return false;
  }
  if (!present.IsSameFile(file.identity)) {
    Report(ErrorKind::MISSING, SQLITE_CANTOPEN, layout,
           "the database that was opened is not there any more, but another one; open it again");
    return false;
  }
  return true;
}

int DefineDatabase(const Layout& layout, const std::string& path) noexcept {
  int code = SQLITE_OK;
  const DatabaseHandle handle = OpenFile(path.c_str(), SQLITE_OPEN_READWRITE, code);
  char marks[96];
  std::snprintf(marks, sizeof marks, "PRAGMA application_id=%d; PRAGMA user_version=%d; COMMIT;",
                layout.applicationId, layout.version);
  char mode[48];
  std::snprintf(mode, sizeof mode, "PRAGMA journal_mode=%s", layout.journalMode);
  for (const char* sql : {"PRAGMA synchronous=FULL; BEGIN EXCLUSIVE;", layout.definition,
                          static_cast<const char*>(marks), static_cast<const char*>(mode)}) {
    if (code == SQLITE_OK) {
      code = sqlite3_exec(handle.get(), sql, nullptr, nullptr, nullptr);
    }
  }
  return code;
}

}  // namespace DBStore::internal
