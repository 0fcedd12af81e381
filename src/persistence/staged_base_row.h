// What the row of a staged change held when the change was staged, as a row.
#pragma once

#include "platform/db_store.h"

#include "persistence/row_map.h"

#include <optional>

namespace TarnConfigStore {

/// The columns of READ_TABLE_CONFIG as they were; an empty map where there was no row. Nothing where
/// nobody knows. Raises ConfigStoreException 2000 "Get failed: IDENTIFIER".
std::optional<RowMap> ReadStagedBaseRow(const ConfigStoreObjectId& id,
                                        const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
