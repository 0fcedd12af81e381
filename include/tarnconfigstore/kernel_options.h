// The kernel's boot options: one object, tarn/tkernel/options.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/export.h"

#include <memory>

namespace TarnConfigStore {

// Options take effect at the next boot: what is set waits as the row's pending value until
// SetBootStatus (boot_state.h) confirms or drops it. Vital members are in force at once. Both
// functions take a connection of their own, and raise ValidationException 2000 for any other
// identifier and for one with an instance id, and ConfigStoreException 1037 when the type is not
// installed. Thread-safe.

/// The options that the next boot gets: the vital members and, over them, the pending ones, or those
/// in force where nothing is pending. Without times, and revision 0. An empty pointer when nothing
/// is stored. While the host is being remediated ("BOOT_MODE" is "1"), the options staged in the
/// next-boot store stand in for both. Raises ConfigStoreException 2000 "Get failed: IDENTIFIER", or
/// "Failed to read value from database." when "BOOT_MODE" cannot be read.
TARN_CONFIG_STORE_EXPORT std::shared_ptr<ConfigStoreObject> GetKernelOptions(
    const ConfigStoreObjectId& csoId);

/// Replaces the options that wait for the next boot, and the vital members; user members in force
/// stay. What automatic configuration had set for the row goes, and so do cached values. The data is
/// cleaned of empty content and checked as ConfigStore::Set does; cached members are refused, since
/// there is no place for them. An empty handle, and an object without data, are logged and nothing
/// is written. Counts as a write of the row, and writes no "BOOT_MODE". Runs in a transaction of its
/// own, and so fails at once on a thread that holds one on a store. Nobody is notified: nothing has
/// changed yet. Throws ValidationException 1089 with every finding, and ConfigStoreException 2000
/// "Tarn host is being remediated by ORC, cannot set next-boot configuration." while "BOOT_MODE" is
/// "1", or "Database call to update Kernel options configuration failed for: IDENTIFIER"; the row is
/// then as it was.
TARN_CONFIG_STORE_EXPORT void SetKernelOptions(std::shared_ptr<ConfigStoreObject> object);

}  // namespace TarnConfigStore
