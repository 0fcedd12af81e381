// The key/value entries that tell of the host's boot, read on a connection that the caller holds.
#pragma once

#include "platform/db_store.h"

namespace TarnConfigStore {

/// True exactly while "IS_BOOT" holds "true". Raises ConfigStoreException 2000 "Failed to read
/// value from database.", also for an empty handle.
bool IsBootInternal(const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
