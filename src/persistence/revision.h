// Revisions of stored objects.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include <cstdint>

namespace TarnConfigStore {

/// The number of writes of an object's row; kDefaultRevision when there is none. Raises
/// ConfigStoreException 2000 "GetRevision command failed".
std::int32_t GetRevisionInternal(const ConfigStoreObjectId& id,
                                 const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
