// What is to take effect, as far as rows of current configuration hold it.
#pragma once

#include "tarnconfigstore/contexts.h"

#include "platform/db_store.h"

#include "persistence/row_objects.h"

#include <vector>

namespace TarnConfigStore {

// The value of a row that is to take effect is its pending one or, where the row waits to be
// confirmed, the user's. The flag DESIRED_WITH_VITAL_AND_CACHED merges the row's other two values
// under it.

/// One object, empty when it has nothing of the kind. Raises ConfigStoreException 2000 "Get failed:
/// IDENTIFIER".
ObjectHandle GetDesiredInternal(const ConfigStoreObjectId& id,
                                const DBStore::ConnectionHandle& connection,
                                const SchemaHandle& schema, FLAG flag);

/// All instances of a type, whatever the identifier's instance id. Raises ConfigStoreException 2000
/// "Read Instances failed for: IDENTIFIER".
std::vector<ObjectHandle> GetDesiredUserConfigInstancesInternal(
    const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema, FLAG flag);

/// The rows of the whole store that have such a value, as "Value". Raises ConfigStoreException 2000
/// "Get store rows failed.".
RowMapList GetDesiredUserConfigContents(const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
