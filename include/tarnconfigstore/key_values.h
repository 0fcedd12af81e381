// The key/value entries that programs of the host keep beside the configuration.
#pragma once

#include "tarnconfigstore/export.h"

#include <string>

namespace TarnConfigStore {

/// Creates or replaces an entry, durably.
/// Raises ConfigStoreException 1002 when the store cannot be opened and 2000 "Failed to write KV
/// table for key: KEY" when the write fails. A thread that holds a write transaction on a store of
/// its own cannot call this: it fails at once, and GetLastStoreError says so. Nothing is written on
/// failure. Thread-safe.
TARN_CONFIG_STORE_EXPORT void SetKeyValue(const std::string& key, const std::string& value);

/// Reads an entry; an empty text when there is none.
/// Raises ConfigStoreException 1002 when the store cannot be opened and 2000 "Failed to read KV
/// table for key: KEY" when the read fails. Thread-safe.
TARN_CONFIG_STORE_EXPORT std::string GetKeyValue(const std::string& key);

}  // namespace TarnConfigStore
