#include "db/backup/pending_restore.h"

#include "platform/db_store.h"
#include "platform/host_paths.h"
#include "platform/process_locks.h"

#include "db/backup/restore_target.h"
#include "db/backup/steps.h"
#include "db/last_error.h"
#include "process/clock.h"

#include <sqlite3.h>

#include <cerrno>
#include <functional>
#include <optional>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace DBStore::internal::PendingRestore {
namespace {

constexpr mode_t kMode = 0600;
constexpr const char* kFixedPath = HostPaths::kPendingRestore;

// Both stores on their way to another content. Writers of the types are locked out first, as
// everybody does who writes both; their readers only for the moment in which both change. To lock them
// out, too, the engine has to let go of the writers: one who comes in between waits for the store,
// and is waited for.
class BothStores {
 public:
  BothStores(const BackupFile& backup, const StoreDirectory& directory,
             const std::function<void()>& whenLocked = {})
      : whenLocked_(whenLocked) {
    const std::int64_t end = Clock::Now() + std::int64_t{kWaitLimit} * 1'000'000;
    while (!TryPrepare(backup, directory)) {
      if (Clock::Now() >= end) {
        types_->RaiseLocked();
      }
    }
  }

  /// To be called once everybody knows that it is about to happen.
  void Complete(const StoreDirectory& directory) {
    if (!types_->IsNew() || !store_->IsNew()) {
      LetEverybodyLook();
    }
    store_->Complete();
    types_->Complete();
    if (types_->IsNew() || store_->IsNew()) {
      directory.Sync();
    }
    Settle();
  }

  bool MayHaveChanged() const noexcept {
    return store_->MayHaveChanged() || types_->MayHaveChanged();
  }

  void Tell(HostBackup::Restored& result) const {
    for (const RestoreTarget* target : {&*store_, &*types_}) {
      (target->IsNew() ? result.created : result.replaced).push_back(target->Path());
    }
  }

  // Who has the stores open looks for a restore that was begun before each write, and once in a tick
  // of the coarse clock before it reads.
  static void LetEverybodyLook() noexcept {
    timespec tick = {};
    clock_getres(CLOCK_MONOTONIC_COARSE, &tick);
    const std::int64_t until =
        Clock::Now() + 2 * (static_cast<std::int64_t>(tick.tv_sec) * 1'000'000'000 + tick.tv_nsec);
    while (Clock::Now() < until) {
      nanosleep(&tick, nullptr);
    }
  }

 private:
  // Opening them as everybody does says whether they are what they should be, and makes what readers
  // need beside them. Nothing here waits for a writer: who was about to become one waits for us.
  static void Settle() {
    Step("opening the stores");
    const DatabaseFile store = OpenDatabaseAsItIs(CurrentStoreLayout(), true);
    const DatabaseFile types =
        store ? OpenDatabaseAsItIs(SchemaStoreLayout(), true) : DatabaseFile();
    if (!types) {
      RaiseReported();
    }
    sqlite3_wal_checkpoint_v2(store.handle.get(), "main", SQLITE_CHECKPOINT_PASSIVE, nullptr,
                              nullptr);
  }

  // False when somebody came in between: the store is then given back to them.
  bool TryPrepare(const BackupFile& backup, const StoreDirectory& directory) {
    constexpr int kMoment = 100;
    types_.emplace(backup, backup.schemaStore, directory);
    store_.emplace(backup, backup.store, directory);
    types_->LockWriters();
    if (!store_->Lock(kWaitLimit)) {
      store_->RaiseLocked();
    }
    if (whenLocked_) {
      whenLocked_();
    }
    store_->Copy();
    if (!types_->Lock(kMoment)) {
      store_.reset();
      return false;
    }
    types_->Copy();
    return true;
  }

  const std::function<void()> whenLocked_;
  std::optional<RestoreTarget> types_;
  std::optional<RestoreTarget> store_;
};

void TellUnfinished(const std::exception& failure) {
  const LastError error = GetLastError();
  ReportFailure(
      error.kind, error.code,
      {kFixedPath,
       ": a restore was begun and is not complete; the next who opens the stores, and may "
       "write them, completes it: ",
       failure.what()});
}

// Types that are kept in memory are looked after once in a tick, too: nobody is let in who could
// still take the old ones for those of today.
void End(const std::string& path, const StoreDirectory& directory) {
  BothStores::LetEverybodyLook();
  Step("ending the restore");
  if (unlink(path.c_str()) != 0) {
    RaiseSystemError(kFixedPath, "cannot be removed after it was restored", errno);
  }
  directory.Sync();
}

// A copy of the backup beside the stores, which may be another file system than the backup's. Its
// owner is the stores' one: whoever may write them may complete the restore.
class Draft {
 public:
  Draft(const BackupFile& backup, const StoreDirectory& directory)
      : path_(directory.PathOf(kFixedPath)), draft_(path_ + ".new") {
    Step("making the copy");
    BackupFile copy(MakeDraft(draft_, kMode, kFixedPath), kFixedPath);
    copy.created = backup.created;
    copy.schemaStore = backup.schemaStore;
    copy.store = backup.store;
    FileIdentity store;
    if (geteuid() == 0 && IdentifyFile(directory.PathOf(HostPaths::kStore), store) &&
        fchown(copy.Descriptor(), store.owner, store.group) != 0) {
      RaiseSystemError(kFixedPath, "cannot be given to the owner of the stores", errno);
    }
    Step("copying the backup");
    backup.CopyTo(copy);
  }
  ~Draft() { RemoveDraft(draft_); }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  const std::string& Path() const noexcept { return path_; }

  void Begin(const StoreDirectory& directory) {
    Step("beginning the restore");
    if (rename(draft_.c_str(), path_.c_str()) != 0) {
      RaiseSystemError(kFixedPath, "cannot be given its name", errno);
    }
    directory.Sync();
  }

  /// As long as nothing has changed.
  void TakeBack(const StoreDirectory& directory) const {
    if (unlink(path_.c_str()) == 0) {
      directory.Sync();
    }
  }

 private:
  const std::string path_;
  const std::string draft_;
};

}  // namespace

bool IsBegun() noexcept {
  try {
    struct stat status {};
    return lstat(HostPaths::Resolve(kFixedPath).c_str(), &status) == 0;
  } catch (const std::bad_alloc&) {
    return true;  // who then tries to complete it fails for the same reason
  }
}

bool IsComplete() {
  if (!IsBegun()) {
    return true;
  }
  try {
    const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
    const StoreDirectory directory([]() noexcept { return !IsBegun(); });
    if (directory.IsHeld()) {
      CompleteIn(directory);
    }
    return true;
  } catch (const std::runtime_error& failure) {
    TellUnfinished(failure);
    return false;
  }
}

void CompleteIn(const StoreDirectory& directory) {
  if (!IsBegun()) {
    return;
  }
  const std::string path = directory.PathOf(kFixedPath);
  const BackupFile backup = BackupFile::Open(path, kFixedPath);
  backup.CheckBytes();
  BothStores(backup, directory).Complete(directory);
  End(path, directory);
}

HostBackup::Restored Restore(const BackupFile& backup, const StoreDirectory& directory,
                             const std::function<void()>& whenLocked) {
  HostBackup::Restored result;
  // One that was begun before may have changed one store already.
  const bool wasBegun = IsBegun();
  Draft draft(backup, directory);
  BothStores stores(backup, directory, whenLocked);
  stores.Tell(result);
  try {
    draft.Begin(directory);
    stores.Complete(directory);
    End(draft.Path(), directory);
  } catch (const std::exception& failure) {
    if (!wasBegun && !stores.MayHaveChanged()) {
      draft.TakeBack(directory);
      throw;
    }
    TellUnfinished(failure);
    RaiseReported();
  }
  return result;
}

}  // namespace DBStore::internal::PendingRestore
