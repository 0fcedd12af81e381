// Mending the databases.
#include "platform/host_paths.h"
#include "platform/host_repair.h"
#include "platform/process_locks.h"

#include "db/backup/backup_file.h"
#include "db/backup/part_copy.h"
#include "db/backup/pending_restore.h"
#include "db/doctor/database_check.h"
#include "db/doctor/keeping.h"
#include "db/doctor/salvage.h"
#include "db/doctor/statements.h"
#include "db/raising.h"
#include "db/store_directory.h"

#include <sqlite3.h>

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <optional>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace HostRepair {
namespace {

using namespace DBStore::internal;
using DBStore::ErrorKind;

DatabaseState StateOf(const Layout& layout) {
  std::vector<Finding> ignored;
  return CheckDatabase(layout, ignored);
}

// Everything that tells when a database was written last: a journal comes and goes with what is
// written, or taken back. The clock of these times ticks: what is written after a pause shows in them.
std::string Fingerprint() {
  std::string text;
  for (const char* fixedPath : {HostPaths::kStore, HostPaths::kSchemaStore}) {
    for (const char* suffix : {"", "-wal"}) {
      struct stat status {};
      if (lstat((HostPaths::Resolve(fixedPath) + suffix).c_str(), &status) == 0) {
        for (const auto number :
             {static_cast<std::int64_t>(status.st_ino), static_cast<std::int64_t>(status.st_size),
              static_cast<std::int64_t>(status.st_mtim.tv_sec),
              static_cast<std::int64_t>(status.st_mtim.tv_nsec)}) {
          text += std::to_string(number) + " ";
        }
      }
      text += "/";
    }
  }
  return text;
}

void Pause() noexcept {
  constexpr timespec kTicks{0, 20'000'000};
  nanosleep(&kTicks, nullptr);
}

// Raised where somebody wrote while rows were looked for.
struct Overtaken {};

/// A new content for both stores, of which at least one has to be salvaged.
class Recovery {
 public:
  Recovery(const std::string& keepingPlace, bool withoutTypes)
      : path_(keepingPlace + "/recovered"), withoutTypes_(withoutTypes) {}

  std::vector<Action> Run(const KeepRows& keep) {
    constexpr int kAttempts = 5;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
      try {
        return Try(keep);
      } catch (const Overtaken&) {
        unlink(path_.c_str());
      }
    }
    Raise(ErrorKind::BUSY, SQLITE_BUSY,
          std::string(HostPaths::kStore) +
              ": others go on writing it; stop them, then run `tarnctl doctor --repair` again");
  }

 private:
  std::vector<Action> Try(const KeepRows& keep) {
    const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
    Pause();
    const std::string before = Fingerprint();
    actions_.clear();
    lost_.clear();
    BackupFile backup(MakeFile(), NameOfPath(path_));
    backup.created = static_cast<std::int64_t>(std::time(nullptr));
    Fill(SchemaStoreLayout(), backup.schemaStore, BackupFile::kAlignment, backup);
    Fill(CurrentStoreLayout(), backup.store, BehindSchemaStore(backup), backup);
    backup.Finish();
    backup.CheckBytes();
    backup.CheckContent();
    keep(lost_);
    const StoreDirectory directory;
    PendingRestore::Restore(backup, directory, [&before] {
      if (Fingerprint() != before) {
        throw Overtaken();
      }
    });
    EmptyLog();
    return actions_;
  }

  // What a damaged log has behind the restore's own commit would be taken for hidden commits again.
  static void EmptyLog() {
    const DatabaseFile store = OpenDatabaseAsItIs(CurrentStoreLayout(), true);
    if (store) {
      sqlite3_wal_checkpoint_v2(store.handle.get(), "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr,
                                nullptr);
    }
  }

  FileDescriptor MakeFile() const {
    FileDescriptor file(
        open(path_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.IsOpen()) {
      RaiseSystemError(NameOfPath(path_), "cannot make the file", errno);
    }
    return file;
  }

  void Fill(const Layout& layout, BackupPart& part, std::int64_t begin, BackupFile& backup) {
    const std::string path = HostPaths::Resolve(layout.fixedPath);
    const DatabaseState state = StateOf(layout);
    if (state.isSound) {
      int code = SQLITE_OK;
      const DatabaseHandle handle = OpenWithSettings(CanonicalPath(path), false, code);
      if (code != SQLITE_OK) {
        RaiseSqliteError(code, layout.fixedPath, path, "reading it for the recovery");
      }
      CopyIntoBackup(handle.get(), path, part, begin, backup);
      return;
    }
    const bool mayBeEmpty = &layout == &SchemaStoreLayout() && withoutTypes_ && state.isLost;
    if (!state.isSalvageable && !mayBeEmpty) {
      Raise(ErrorKind::OTHER, 0,
            std::string(layout.fixedPath) +
                ": nothing can be recovered of it, and the other store cannot be recovered "
                "alone; restore a backup, or give the type files (--types)");
    }
    Salvaged salvaged = Salvage(layout, path);
    if (salvaged.rows == 0 && !mayBeEmpty) {
      Raise(ErrorKind::CORRUPT, SQLITE_CORRUPT,
            std::string(layout.fixedPath) + ": no row can be read any more; " +
                (&layout == &SchemaStoreLayout()
                     ? "give the type files (--types), or restore a backup"
                     : "restore a backup"));
    }
    CopyIntoBackup(salvaged.database.get(), path, part, begin, backup);
    Tell(layout, salvaged);
    lost_.insert(lost_.end(), std::make_move_iterator(salvaged.lost.begin()),
                 std::make_move_iterator(salvaged.lost.end()));
  }

  // What could not be saved is never a success.
  void Tell(const Layout& layout, const Salvaged& salvaged) {
    actions_.push_back(
        {true, "recovered", layout.fixedPath,
         "a new database took its place: " + salvaged.Summary(),
         "the rows are in the new database, which " + NameOfPath(path_) + " holds as well; " +
             std::to_string(salvaged.lost.size()) +
             " that have no place in it, or of which only a part is left, were put aside"});
    if (const std::string losses = salvaged.Losses(); !losses.empty()) {
      actions_.push_back({false, "rows-lost", layout.fixedPath, losses,
                          "what is lost is in no place but a backup that was made before (`tarnctl "
                          "restore`), and, as "
                          "bytes, in the copies of the files"});
    }
  }

  const std::string path_;
  const bool withoutTypes_;
  std::vector<Action> actions_;
  std::vector<LostRow> lost_;
};

// In one transaction, so that nobody meets a database with half of them.
void PutBack(const Layout& layout, const DatabaseState& state, std::vector<Action>& actions) {
  if (state.missing.empty() && state.changed.empty()) {
    return;
  }
  // Past the database layer, which may not open what lacks a part.
  int code = SQLITE_OK;
  const DatabaseHandle handle =
      OpenWithSettings(CanonicalPath(HostPaths::Resolve(layout.fixedPath)), true, code);
  std::vector<Action> done;
  const auto run = [&](const std::string& sql) {
    if (code == SQLITE_OK) {
      code = sqlite3_exec(handle.get(), sql.c_str(), nullptr, nullptr, nullptr);
    }
  };
  const auto make = [&](const SchemaEntry& entry, const char* kind, const char* message) {
    run(entry.sql);
    done.push_back({true, entry.type + kind, layout.fixedPath,
                    entry.type + " " + entry.name + message, "every row is where it was"});
  };
  run(Sql::kBeginMending);
  for (const SchemaEntry& entry : state.changed) {
    std::string drop = "DROP ";
    drop.append(entry.type).append(" \"").append(entry.name).append("\"");
    run(drop);
    make(entry, "-changed", " was made again");
  }
  for (const SchemaEntry& entry : state.missing) {
    make(entry, "-missing", " was made");
    if (entry.type == "table") {
      done.push_back({false, "rows-lost", layout.fixedPath,
                      entry.name + " is empty: what it held went with it",
                      "in no place but a backup that was made before (`tarnctl restore`)"});
    }
  }
  run(Sql::kCommitMending);
  if (code != SQLITE_OK) {
    const std::string reason = handle ? sqlite3_errmsg(handle.get()) : sqlite3_errstr(code);
    actions.push_back({false, "layout", layout.fixedPath, "cannot be mended: " + reason, ""});
    return;
  }
  actions.insert(actions.end(), done.begin(), done.end());
}

// Opening it for writing takes back what a killed process left.
void TakeBackJournal(const Layout& layout, std::vector<Action>& actions) {
  if (!StateOf(layout).hasJournal) {
    return;
  }
  const bool done = static_cast<bool>(OpenDatabaseAsItIs(layout, true));
  actions.push_back({done, "journal", layout.fixedPath,
                     done ? "what a killed process had begun was taken back"
                          : "cannot be taken back: " + DBStore::GetLastError().message,
                     done ? "the database is as it was before that write" : ""});
}

}  // namespace

std::vector<Action> MendDatabases(const std::string& keepingPlace, bool withoutTypes,
                                  const KeepRows& keep) {
  std::vector<Action> actions;
  bool needsRecovery = false;
  {
    const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
    for (const Layout* layout : {&CurrentStoreLayout(), &SchemaStoreLayout()}) {
      TakeBackJournal(*layout, actions);
      const DatabaseState state = StateOf(*layout);
      if (state.isSound) {
        PutBack(*layout, state, actions);
      } else if (state.isSalvageable ||
                 (layout == &SchemaStoreLayout() && withoutTypes && state.isLost)) {
        needsRecovery = true;
      }
    }
  }
  if (needsRecovery) {
    std::vector<Action> recovered = Recovery(keepingPlace, withoutTypes).Run(keep);
    actions.insert(actions.end(), recovered.begin(), recovered.end());
  }
  return actions;
}

}  // namespace HostRepair
