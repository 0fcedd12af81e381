// Deleting current configuration.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include "persistence/statements.h"

namespace TarnConfigStore {

// Deleting what is not there is no error. After a failure everything is as it was.

/// One row. Raises ConfigStoreException 2000 "Delete failed: IDENTIFIER".
void DeleteInternal(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection);

/// All rows of a type, whatever the identifier's instance id. Raises ConfigStoreException 2000
/// "Delete instances failed: IDENTIFIER".
void DeleteInstancesInternal(const ConfigStoreObjectId& id,
                             const DBStore::ConnectionHandle& connection);

// One value of all instances of a type; the rows stay, with their revision, times and other values.
// All raise ConfigStoreException 2000 "Failed to Delete in SetConfigInstancesInternal"; the text is
// part of the interface.
void DeleteVitalConfigInstances(const ConfigStoreObjectId& id,
                                const DBStore::ConnectionHandle& connection);
void DeleteCachedConfigInstances(const ConfigStoreObjectId& id,
                                 const DBStore::ConnectionHandle& connection);
void DeleteUserConfigInstances(const ConfigStoreObjectId& id,
                               const DBStore::ConnectionHandle& connection);
void DeleteAutoConfConfigInstances(const ConfigStoreObjectId& id,
                                   const DBStore::ConnectionHandle& connection);
void DeletePartialConfigInstances(const TypeStatement& statement, const ConfigStoreObjectId& id,
                                  const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
