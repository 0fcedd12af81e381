// What the host says about its boot.
#pragma once

#include "tarnconfigstore/export.h"

namespace TarnConfigStore {

/// True exactly while the key/value entry "IS_BOOT" holds "true". Read from the store at every
/// call. Raises ConfigStoreException 2000 "Failed to read value from database." when the store
/// cannot be read. Thread-safe.
TARN_CONFIG_STORE_EXPORT bool IsBoot();

}  // namespace TarnConfigStore
