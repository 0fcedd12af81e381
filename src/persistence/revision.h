// Instance ids and revisions of stored objects.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include "persistence/existing_instances.h"

#include <cstdint>
#include <list>
#include <string>
#include <utility>

namespace TarnConfigStore {

/// The number of writes of an object's row; kDefaultRevision when there is none. Raises
/// ConfigStoreException 2000 "GetRevision command failed".
std::int32_t GetRevisionInternal(const ConfigStoreObjectId& id,
                                 const DBStore::ConnectionHandle& connection);

// Of all rows of a type, in the order of their ids; rows whose values are all empty are among them.

/// Raises ConfigStoreException 2000 "GetInstanceIds failed".
std::list<std::string> GetInstanceIdsInternal(const ConfigStoreObjectId& id,
                                              const DBStore::ConnectionHandle& connection);

/// Raises ConfigStoreException 2000 "GetRevision command failed".
std::list<std::pair<std::string, std::int32_t>> GetInstancesRevisionInternal(
    const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection);

/// What a bulk write carries over. Raises ConfigStoreException 2000 "Failed to read revision from
/// configStore.".
ExistingInstances ReadExistingInstances(const ConfigStoreObjectId& id,
                                        const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
