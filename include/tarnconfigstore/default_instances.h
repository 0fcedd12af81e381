// The instances that types ship with, beside those that callers have.
//
// Both functions take a list of instances of one type; empty handles in it stay in it. They read
// the shipped instances on a connection of their own. Thread-safe, unless another thread changes
// the list meanwhile. Both throw
//   ConfigStoreException 1037 when the type is not installed,
//   ValidationException 2000 when the type has no instances,
//   InvalidArgumentException 1062 for an object of another type, and
//   ConfigStoreException 2000 when the store cannot be opened or read.
// The list is then as it was.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/export.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

/// Adds the shipped instances whose ids are not in the list. They are added at the end, in the
/// order of their ids.
/// \param type  names the type; its instance id is ignored
TARN_CONFIG_STORE_EXPORT void AddDefaultConfigInstances(
    const ConfigStoreObjectId& type, std::vector<std::shared_ptr<ConfigStoreObject>>& objects);

/// Removes the instances that equal the shipped instance of the same id. The order of members and
/// the ids that the store generates do not count. The others keep their order.
/// \param type  names the type; its instance id is ignored
TARN_CONFIG_STORE_EXPORT void FilterDefaultConfigInstances(
    const ConfigStoreObjectId& type, std::vector<std::shared_ptr<ConfigStoreObject>>& objects);

}  // namespace TarnConfigStore
