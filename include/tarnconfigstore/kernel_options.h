// The kernel's boot options: one object, tarn/tkernel/options.
//
// Options take effect at the next boot. What is set is the row's pending value until SetBootStatus
// (boot_state.h) confirms or drops it; vital members are in force at once.
//
// Both functions take a connection of their own and are thread-safe. They throw
//   ValidationException 2000 for any other identifier, and for one with an instance id,
//   ConfigStoreException 1037 when the type is not installed, and
//   ConfigStoreException 2000 "Failed to connect to database".
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/export.h"

#include <memory>

namespace TarnConfigStore {

/// Reads the options of the next boot: the pending ones or, where nothing is pending, those in
/// force, merged over the vital ones. While the key/value entry "BOOT_MODE" is "1", the options
/// that are staged in the next-boot store are read instead.
/// \return the options, without times and with revision 0; an empty pointer when nothing is stored
/// \throws ConfigStoreException 2000 "Get failed: IDENTIFIER"
/// \throws ConfigStoreException 2000 "Failed to read value from database." when "BOOT_MODE" cannot
///         be read
TARN_CONFIG_STORE_EXPORT std::shared_ptr<ConfigStoreObject> GetKernelOptions(
    const ConfigStoreObjectId& csoId);

/// Replaces the pending and the vital options, and keeps the user value, which is in force. The
/// automatic and the cached value become empty. The revision counts up. Writes no "BOOT_MODE".
///
/// The data is cleaned and checked as ConfigStore::Set does. Runs in a transaction of its own:
/// fails at once on a thread that holds one on a store. When the call throws, the row is as it was.
/// Nothing is announced to the management daemon.
/// \param object  an empty handle, and an object without data, are logged, and nothing is written
/// \throws ValidationException 1089 with every finding, when the data does not fit the type; cached
///         members are findings, since there is no place for them
/// \throws ConfigStoreException 2000 "Tarn host is being remediated by ORC, cannot set next-boot
///         configuration." while "BOOT_MODE" is "1"
/// \throws ConfigStoreException 2000 "Database call to update Kernel options configuration failed
///         for: IDENTIFIER", or for a transaction that could not begin or commit
TARN_CONFIG_STORE_EXPORT void SetKernelOptions(std::shared_ptr<ConfigStoreObject> object);

}  // namespace TarnConfigStore
