#include "platform/host_copy.h"

#include "platform/host_paths.h"
#include "platform/process_locks.h"

#include "db/access_rights.h"
#include "db/backup/page_copy.h"
#include "db/backup/pending_restore.h"
#include "db/backup/statements.h"
#include "db/backup/steps.h"
#include "db/database_file.h"
#include "db/query.h"
#include "db/raising.h"
#include "db/store_directory.h"

#include <sqlite3.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <sys/stat.h>

namespace HostCopy {
namespace {

using namespace DBStore::internal;
using DBStore::ErrorKind;

bool IsThere(const Layout& layout) {
  struct stat status {};
  return lstat(HostPaths::Resolve(layout.fixedPath).c_str(), &status) == 0 || errno != ENOENT;
}

DatabaseFile OpenForReading(const Layout& layout) {
  DatabaseFile file = OpenDatabaseAsItIs(layout, false);
  if (!file) {
    RaiseReported();
  }
  return file;
}

// A database of which the moment is fixed; empty where there is none.
DatabaseFile Hold(const Layout& layout) {
  if (!IsThere(layout)) {
    return {};
  }
  DatabaseFile file = OpenForReading(layout);
  const int code = sqlite3_exec(file.handle.get(), Sql::kBeginReading, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) {
    RaiseSqliteError(code, layout.fixedPath, file.path, "reading it for a copy");
  }
  return file;
}

// Nobody else knows the copy, and nobody needs it after a failure: it is written without a journal.
int CopyPages(const DatabaseFile& from, const std::string& path) {
  int code = SQLITE_OK;
  const DatabaseHandle to = OpenFile(CanonicalPath(path).c_str(), SQLITE_OPEN_READWRITE, code);
  if (code == SQLITE_OK) {
    code = sqlite3_exec(to.get(), Sql::kWriteUnsafely, nullptr, nullptr, nullptr);
  }
  if (code == SQLITE_OK) {
    PageCopy copy(from.handle.get(), to.get());
    code = copy.Lock();
    code = code == SQLITE_OK ? copy.CopyAllButLast() : code;
    code = code == SQLITE_OK ? copy.Complete() : code;
  }
  return code;
}

void CopyTo(const DatabaseFile& file, const Layout& layout, const std::string& first,
            const std::string& second) {
  if (!file) {
    return;
  }
  Step("copying a store");
  const std::string path = first + layout.fixedPath;
  constexpr mode_t kOwnerAlone = 0600;
  MakeDraft(path, kOwnerAlone, path);
  const int code = CopyPages(file, path);
  if (code != SQLITE_OK) {
    RaiseSqliteError(code, path, path, std::string("making a copy of ") + layout.fixedPath);
  }
  std::error_code failure;
  if (!std::filesystem::copy_file(path, second + layout.fixedPath, failure)) {
    RaiseSystemError(second + layout.fixedPath,
                     std::string("cannot make a copy of ") + layout.fixedPath, failure.value());
  }
}

// Those that the host has, its root among them: making the others belongs to what is tried.
void MakeDirectories(const std::string& root) {
  const std::string store = HostPaths::kStore;
  for (std::size_t end = 0; end != std::string::npos; end = store.find('/', end + 1)) {
    const std::string fixed = store.substr(0, end);
    struct stat status {};
    if (stat((HostPaths::GetRoot() + fixed + "/").c_str(), &status) != 0) {
      return;
    }
    if (mkdir((root + fixed).c_str(), S_IRWXU) != 0) {
      RaiseSystemError(root + fixed, "cannot make the directory", errno);
    }
  }
}

void RequireComplete() {
  if (!PendingRestore::IsComplete()) {
    RaiseReported();
  }
}

// False when somebody began a restore meanwhile: what was read may be half of it.
bool CopyBoth(const std::string& first, const std::string& second) {
  // The types first: nobody changes them while they are being read. Rows of an installation that is
  // under way may be there already, as any reader may find them.
  DatabaseFile types = Hold(SchemaStoreLayout());
  const DatabaseFile store = Hold(CurrentStoreLayout());
  if (PendingRestore::IsBegun()) {
    return false;
  }
  CopyTo(types, SchemaStoreLayout(), first, second);
  types.handle.reset();
  CopyTo(store, CurrentStoreLayout(), first, second);
  return true;
}

// What fails in passing is no right that is missing.
bool RightsRefuse(const std::string& path) {
  return !CanBeWritten(path) && (errno == EACCES || errno == EPERM || errno == EROFS);
}

}  // namespace

void Copy(const std::string& first, const std::string& second) {
  MakeDirectories(first);
  MakeDirectories(second);
  constexpr int kAttempts = 5;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    RequireComplete();
    // A child that is forked while databases are open could use none of its own.
    const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
    if (CopyBoth(first, second)) {
      return;
    }
  }
  Raise(ErrorKind::BUSY, 0,
        std::string(HostPaths::kStore) +
            ": the stores are being restored again and again; try later");
}

std::map<std::string, std::string> ReadEntries() {
  std::map<std::string, std::string> entries;
  if (!IsThere(CurrentStoreLayout())) {
    return entries;
  }
  RequireComplete();
  const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
  const DatabaseFile file = OpenForReading(CurrentStoreLayout());
  Query query(file.handle.get(), Sql::kReadEntries);
  while (query.Step()) {
    entries.emplace(query.Text(0), query.Text(1));
  }
  if (query.Code() != SQLITE_OK) {
    RaiseSqliteError(query.Code(), HostPaths::kStore, file.path, "reading the key/value entries");
  }
  return entries;
}

std::string WhyNotWritable(const char* fixedPath) {
  std::string path = HostPaths::Resolve(fixedPath);
  struct stat status {};
  if (lstat(path.c_str(), &status) == 0) {
    return RightsRefuse(path) || RightsRefuse(path.substr(0, path.rfind('/')))
               ? MissingWriteRight(path)
               : "";
  }
  // What would be made first is made in the first directory that is there.
  do {
    path.resize(path.rfind('/'));
  } while (!path.empty() && lstat(path.c_str(), &status) != 0);
  return RightsRefuse(path.empty() ? "/" : path) ? MissingWriteRight(path + "/-") : "";
}

}  // namespace HostCopy
