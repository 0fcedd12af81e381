// What the store's tables hold about a type as a whole: the objects that came with it, and how many
// are stored.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include "objects/division.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// A row of DefaultConfig; the automatic value is not used.
struct DefaultRow {
  std::string instanceId;
  ColumnValues values;
};

/// Makes the rows the type's only ones in DefaultConfig; when they are that already, writes
/// nothing. Raises ConfigStoreException 2000 "Write default config failed for: IDENTIFIER"; the
/// caller's transaction undoes what was written by then.
/// \param type  an identifier without instance id
void ReplaceDefaultRows(const ConfigStoreObjectId& type, const std::string& version,
                        std::vector<DefaultRow> rows, const DBStore::ConnectionHandle& connection);

/// How many instances of a type have a value of any kind in Config. Raises ConfigStoreException
/// 2000 "Read Instances failed for: IDENTIFIER".
int CountStoredInstances(const ConfigStoreObjectId& type,
                         const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
