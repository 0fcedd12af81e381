// The key/value entries that programs of the host keep beside the configuration. Both functions
// take a connection of their own and are thread-safe.
#pragma once

#include "tarnconfigstore/export.h"

#include <string>

namespace TarnConfigStore {

/// Creates or replaces an entry. It is durable when the call returns; when the call throws, nothing
/// is written.
/// \throws ConfigStoreException 1002 when the store cannot be opened
/// \throws ConfigStoreException 2000 "Failed to write KV table for key: KEY" when the write fails;
///         at once on a thread that holds a transaction on a store, since it would wait for itself
TARN_CONFIG_STORE_EXPORT void SetKeyValue(const std::string& key, const std::string& value);

/// Reads an entry.
/// \return its value; empty when there is no entry
/// \throws ConfigStoreException 1002 when the store cannot be opened
/// \throws ConfigStoreException 2000 "Failed to read KV table for key: KEY" when the read fails
TARN_CONFIG_STORE_EXPORT std::string GetKeyValue(const std::string& key);

}  // namespace TarnConfigStore
