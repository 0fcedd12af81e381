// Making a backup.
#include "platform/host_backup.h"
#include "platform/process_locks.h"

#include "db/backup/backup_file.h"
#include "db/backup/part_copy.h"
#include "db/backup/pending_restore.h"
#include "db/backup/statements.h"
#include "db/backup/steps.h"
#include "db/backup/target_file.h"
#include "db/database_file.h"
#include "db/raising.h"

#include <sqlite3.h>

#include <array>
#include <ctime>
#include <optional>
#include <unistd.h>

namespace HostBackup {
namespace {

using namespace DBStore::internal;
using DBStore::ErrorKind;

void Run(const DatabaseFile& file, const Layout& layout, const char* sql, const char* what) {
  const int code = sqlite3_exec(file.handle.get(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) {
    RaiseSqliteError(code, layout.fixedPath, file.path, what);
  }
}

// Both stores at one moment. Types are changed with the schema store's right to write taken first,
// then the store's rows are written and committed, then the types: who has that right for a moment
// knows that nothing of the kind is under way. Rows may be written all the while; what is read of
// them is what there was at the first look.
class Moment {
 public:
  Moment()
      : lock_(Open(SchemaStoreLayout())),
        types_(Open(SchemaStoreLayout())),
        store_(Open(CurrentStoreLayout())) {
    Step("locking the types");
    Run(lock_, SchemaStoreLayout(), Sql::kBeginWriting, "locking it for the backup");
    Run(store_, CurrentStoreLayout(), Sql::kBeginReading, "reading it for the backup");
  }

  void CopyTypes(BackupFile& backup) {
    CopyIntoBackup(types_.handle.get(), types_.path, backup.schemaStore, BackupFile::kAlignment,
                   backup);
    Run(lock_, SchemaStoreLayout(), Sql::kEnd, "unlocking it");
  }

  void CopyStore(BackupFile& backup) {
    CopyIntoBackup(store_.handle.get(), store_.path, backup.store, BehindSchemaStore(backup),
                   backup);
  }

 private:
  static DatabaseFile Open(const Layout& layout) {
    DatabaseFile file = OpenDatabaseAsItIs(layout, true);
    if (!file) {
      RaiseReported();
    }
    return file;
  }

  DatabaseFile lock_;  // beside the other one: SQLite copies nothing from one that may write
  DatabaseFile types_;
  DatabaseFile store_;
};

// False when somebody began a restore meanwhile: what was locked may be half of it.
bool CopyBoth(BackupFile& backup) {
  Moment moment;
  if (PendingRestore::IsBegun()) {
    return false;
  }
  moment.CopyTypes(backup);
  moment.CopyStore(backup);
  return true;
}

}  // namespace

Written Backup(const std::string& path, bool replace) {
  TargetFile target(path, replace);
  constexpr int kAttempts = 5;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (!PendingRestore::IsComplete()) {
      RaiseReported();
    }
    // A child that is forked while databases are open could use none of its own.
    const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
    BackupFile backup(target.Make(), path);
    backup.created = static_cast<std::int64_t>(std::time(nullptr));
    if (!CopyBoth(backup)) {
      continue;
    }
    Step("finishing the file");
    backup.Finish();
    Step("checking the file");
    backup.CheckBytes();
    const Content content = backup.CheckContent();
    target.GiveName();
    return {static_cast<std::uint64_t>(backup.Length()), content};
  }
  Raise(ErrorKind::BUSY, 0, path + ": the stores are being restored again and again; try later");
}

}  // namespace HostBackup
