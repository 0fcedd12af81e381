// The kernel's boot options in the store.
#pragma once

#include "platform/db_store.h"

#include "persistence/row_objects.h"

namespace TarnConfigStore {

/// Replaces the options that wait for the next boot and the vital ones; the user's, which are in
/// force, stay. Counts as a write of the row. Raises ConfigStoreException 2000 "Database call to
/// update Kernel options configuration failed for: IDENTIFIER"; the row is then as it was.
void SetKernelOptionsInternal(const ObjectHandle& object, const SchemaHandle& schema,
                              const DBStore::ConnectionHandle& connection);

/// The options that the next boot gets, over the vital ones; while the host is being remediated,
/// those that are staged. Empty when there are none. Raises ConfigStoreException 2000 "Get failed:
/// IDENTIFIER" or "Failed to read value from database.".
/// \param id  of the kernel options
ObjectHandle GetKernelOptionsInternal(const ConfigStoreObjectId& id,
                                      const DBStore::ConnectionHandle& connection,
                                      const SchemaHandle& schema);

}  // namespace TarnConfigStore
