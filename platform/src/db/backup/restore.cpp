// Restoring a backup.
#include "platform/host_backup.h"
#include "platform/host_paths.h"
#include "platform/logger.h"
#include "platform/process_locks.h"

#include "db/backup/backup_file.h"
#include "db/backup/pending_restore.h"
#include "db/backup/steps.h"
#include "db/database_file.h"
#include "db/open_databases.h"
#include "db/raising.h"
#include "db/store_directory.h"

#include <sys/stat.h>

namespace HostBackup {
namespace {

using namespace DBStore::internal;
using DBStore::ErrorKind;

void RefuseWhereThereIsAStore(const StoreDirectory& directory) {
  // What a killed restore left is what there is.
  PendingRestore::CompleteIn(directory);
  for (const char* fixedPath : {HostPaths::kStore, HostPaths::kSchemaStore}) {
    struct stat status {};
    if (lstat(directory.PathOf(fixedPath).c_str(), &status) == 0) {
      Raise(ErrorKind::OTHER, 0,
            std::string(fixedPath) +
                ": exists; restoring over it has to be forced (`tarnctl restore "
                "--force FILE`), and loses what it holds");
    }
  }
}

}  // namespace

Restored Restore(const std::string& path, bool force) {
  if (OpenDatabases::AreOutOfReach()) {
    Raise(ErrorKind::MISUSE, 0, path + ": " + OpenDatabases::kOutOfReach);
  }
  const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
  Step("opening the backup");
  const BackupFile backup = BackupFile::Open(path, path);
  backup.CheckBytes();
  const Content content = backup.CheckContent();
  std::vector<std::string> made;
  StoreDirectory::Make(made);
  const StoreDirectory directory;
  if (!force) {
    RefuseWhereThereIsAStore(directory);
  }
  Restored result = PendingRestore::Restore(backup, directory);
  result.created.insert(result.created.begin(), made.begin(), made.end());
  result.content = content;
  for (const BackupPart* part : {&backup.store, &backup.schemaStore}) {
    if (part->version < part->layout->version) {
      CSLogger::Log(CSLogger::kOutcome,
                    "%s: is of layout %d, as the backup is; `tarnctl init` brings it to layout %d",
                    part->layout->fixedPath, part->version, part->layout->version);
      result.outdated.push_back(directory.PathOf(part->layout->fixedPath));
    }
  }
  return result;
}

}  // namespace HostBackup
