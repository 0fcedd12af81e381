// The instances that types come with, beside those that callers have.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/export.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

// Both take a list of instances of one type; empty handles in it are left as they are. Both read the
// shipped instances on a connection of their own, whatever transaction the caller holds. They raise
// ConfigStoreException 1037 when the type is not installed, ValidationException 2000 when it has no
// instances, InvalidArgumentException 1062 for an object of another type, and ConfigStoreException
// 2000 when the store cannot be opened or read; the list is then as it was. Thread-safe, if nobody
// changes the list meanwhile.

/// Adds to the end of the list each shipped instance that it lacks, in the order of their ids: those
/// whose instance id none of its objects has.
/// \param type  names the type; its instance id does not matter
TARN_CONFIG_STORE_EXPORT void AddDefaultConfigInstances(
    const ConfigStoreObjectId& type, std::vector<std::shared_ptr<ConfigStoreObject>>& objects);

/// Removes from the list the instances that are as they were shipped: those whose data equals the
/// shipped instance of the same id, up to the order of members and to generated ids. What is left is
/// what somebody changed or added, in its order.
/// \param type  names the type; its instance id does not matter
TARN_CONFIG_STORE_EXPORT void FilterDefaultConfigInstances(
    const ConfigStoreObjectId& type, std::vector<std::shared_ptr<ConfigStoreObject>>& objects);

}  // namespace TarnConfigStore
