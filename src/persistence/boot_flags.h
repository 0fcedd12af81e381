// The key/value entries that tell of the host's boot, read and written on a connection that the
// caller holds, and so in its transaction; and whether the host is being upgraded. All raise
// ConfigStoreException 2000, also for an empty handle.
#pragma once

#include "platform/db_store.h"

#include <string>

namespace TarnConfigStore {

/// The host's upgrade context: 0 while no upgrade runs. Ask once an operation, not once a row. Raises
/// with the platform's own message when it cannot be told.
int ReadUpgradeContext();

/// True exactly while "IS_BOOT" holds "true". Raises "Failed to read value from database.".
bool IsBootInternal(const DBStore::ConnectionHandle& connection);

/// True exactly while "BOOT_MODE" holds "1": the remote remediation service mends the host, and
/// owns what its next boot finds. Raises "Failed to read value from database.".
bool IsRemediatedInternal(const DBStore::ConnectionHandle& connection);

/// Raises "Tarn host is being remediated by ORC, cannot set next-boot configuration." while it is.
void RequireNoRemediation(const DBStore::ConnectionHandle& connection);

/// Writes "BOOT_MODE". Raises "Failed to write BootMode to database.".
void WriteBootMode(const std::string& mode, const DBStore::ConnectionHandle& connection);

/// Tells the boot process by "BOOT_MODE" that changes are staged. Raises as WriteBootMode.
void AnnounceStagedChanges(const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
