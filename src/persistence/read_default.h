// Reading the configuration that types come with.
#pragma once

#include "tarnconfigstore/filter_spec_object.h"

#include "platform/db_store.h"

#include "persistence/row_objects.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

// Objects read here have no times, and revision 0. A single object that is not there is no error:
// "Object not found: IDENTIFIER" is logged and the pointer is empty. Single reads raise
// ConfigStoreException 2000 "Get failed: IDENTIFIER", list reads "Get store rows failed.".

/// One shipped object, all parts merged.
ObjectHandle GetDefaultConfigInternal(const ConfigStoreObjectId& id,
                                      const DBStore::ConnectionHandle& connection,
                                      const SchemaHandle& schema);

/// The user part of one shipped object.
ObjectHandle GetDefaultUserConfigInternal(const ConfigStoreObjectId& id,
                                          const DBStore::ConnectionHandle& connection,
                                          const SchemaHandle& schema);

/// The shipped instances that a filter keeps, all parts merged.
std::vector<ObjectHandle> GetDefaultConfigInstancesInternal(
    const std::shared_ptr<FilterSpecObject>& filter, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema);

/// The rows of the shipped user parts: of one instance or, without an instance id, of all.
RowMapList GetDefaultUserConfigMapList(const ConfigStoreObjectId& id,
                                       const DBStore::ConnectionHandle& connection);

/// The user parts of the same instances as objects.
std::vector<ObjectHandle> GetDefaultUserConfigInstancesInternal(
    const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema);

}  // namespace TarnConfigStore
