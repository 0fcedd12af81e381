#include "platform/host_setup.h"

#include "platform/host_paths.h"
#include "platform/process_locks.h"

#include "db/backup/pending_restore.h"
#include "db/database_file.h"
#include "db/layout.h"
#include "db/layout_upgrade.h"
#include "db/open_databases.h"
#include "db/raising.h"
#include "db/store_directory.h"

#include <sqlite3.h>

#include <cerrno>
#include <stdexcept>
#include <sys/stat.h>

namespace HostSetup {
namespace {

using namespace DBStore::internal;
using DBStore::ErrorKind;

bool Exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 || errno != ENOENT;
}

// The database gets its name when it is whole, so that a process that is killed while making it
// leaves nothing that could be taken for a store.
void MakeDatabase(const Layout& layout, const std::string& path, Result& result) {
  const std::string draft = path + ".new";
  MakeDraft(draft, kDatabaseMode, layout.fixedPath);
  const int code = DefineDatabase(layout, draft);
  if (code != SQLITE_OK) {
    RemoveDraft(draft);
    Raise(ErrorKind::OTHER, code,
          std::string(layout.fixedPath) + ": cannot make the database: " + sqlite3_errstr(code));
  }
  if (!GiveName(draft, path)) {
    const int error = errno;
    RemoveDraft(draft);
    RaiseSystemError(layout.fixedPath, "cannot give the database its name", error);
  }
  result.created.push_back(path);
}

void EnsureDatabase(const Layout& layout, const StoreDirectory& directory, Result& result) {
  const std::string path = directory.PathOf(layout.fixedPath);
  const bool existed = Exists(path);
  if (!existed) {
    MakeDatabase(layout, path, result);
  }
  // Opening it for writing also makes the files that readers without the right to write need beside
  // it.
  const DatabaseFile file = OpenDatabaseAsItIs(layout, true);
  if (!file) {
    RaiseReported();
  }
  if (existed) {
    (UpgradeLayout(layout, file) ? result.upgraded : result.unchanged).push_back(path);
  }
}

void MakeStores(Result& result) {
  if (OpenDatabases::AreOutOfReach()) {
    Raise(ErrorKind::OTHER, 0, std::string(HostPaths::kStore) + ": " + OpenDatabases::kOutOfReach);
  }
  const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
  StoreDirectory::Make(result.created);
  const StoreDirectory directory;
  // Where a restore was begun, a store that is missing is not to be an empty one.
  PendingRestore::CompleteIn(directory);
  EnsureDatabase(CurrentStoreLayout(), directory, result);
  EnsureDatabase(SchemaStoreLayout(), directory, result);
  if (!result.created.empty()) {
    directory.Sync();
  }
}

}  // namespace

Result Initialize() {
  Result result;
  try {
    MakeStores(result);
  } catch (const std::runtime_error& failure) {
    result.ok = false;
    result.failure = failure.what();
  }
  return result;
}

}  // namespace HostSetup
