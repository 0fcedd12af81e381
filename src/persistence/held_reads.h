// What a connection holds of current rows, and what a reader gets of it.
#pragma once

#include "platform/db_store.h"

#include "objects/handles.h"

#include <cstdint>
#include <optional>

namespace TarnConfigStore {

// What is found is as current as what a read would find; nothing where the row has to be read. What
// was read is held where that is worth while, which is to be asked for in the turn of the reading.

/// The merged object of READ_TABLE_CONFIG, in an object of the caller's own. Empty also where its
/// type or the upgrade context is not the one that it was made for. Raises as ReadUpgradeContext.
ObjectHandle FindHeldObject(const ConfigStoreObjectId& id,
                            const DBStore::ConnectionHandle& connection,
                            const SchemaHandle& schema);
void HoldObject(const ConfigStoreObject& object, const DBStore::ConnectionHandle& connection,
                const SchemaHandle& schema, int upgradeContext) noexcept;

/// The number of READ_REVISION, which tells of a row that is not there, too.
std::optional<std::int32_t> FindHeldRevision(const ConfigStoreObjectId& id,
                                             const DBStore::ConnectionHandle& connection);
void HoldRevision(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
                  std::int32_t revision) noexcept;

}  // namespace TarnConfigStore
