// A restore that was begun: a verified copy of the backup lies beside the stores, and says that both
// are to become what it holds. As long as it is there nobody uses the stores: who comes next
// completes it, however often that takes, and removes it.
#pragma once

#include "platform/host_backup.h"

#include "db/backup/backup_file.h"
#include "db/store_directory.h"

#include <functional>

namespace DBStore::internal::PendingRestore {

/// For the price of a look at a path.
bool IsBegun() noexcept;

/// Completes what was begun, if anything was, having waited for whoever is about to. False, with the
/// reason reported, when that cannot be done now.
bool IsComplete();

/// The same for one who has the directory. Raises std::runtime_error, reported.
void CompleteIn(const StoreDirectory& directory);

/// Begins a restore with a backup that was checked, and completes it. What fails before it is begun
/// leaves the stores as they were.
/// \param whenLocked  called, where there is one, when nobody else can write the store any more and
///                    nothing of it has been written: what it raises ends the restore
HostBackup::Restored Restore(const BackupFile& backup, const StoreDirectory& directory,
                             const std::function<void()>& whenLocked = {});

}  // namespace DBStore::internal::PendingRestore
