// Writing the layers that one context may change.
#pragma once

#include "platform/db_store.h"

#include "objects/division.h"
#include "persistence/row_objects.h"

#include <string>

namespace TarnConfigStore {

/// On whose behalf the layers of a row change.
enum UPDATE_CONTEXT : int {
  UPDATE_USER = 0,            ///< the user
  UPDATE_DURING_UPGRADE = 1,  ///< the user while an upgrade runs: the row is confirmed by it
  UPDATE_AUTOMATIC = 2,       ///< automatic configuration
};

// The layers are the context's own value (the user's or the automatic one), the vital and the
// cached value; the other context's value stays. All raise ConfigStoreException 2000 "Database call
// to update configuration by context failed for: IDENTIFIER"; the row is then as it was.

/// Replaces the layers by an object's data, divided among them; layers that get nothing become
/// empty, and so does a pending value. Counts as a write of the row, which need not be there yet.
void SetByContextInternal(const ObjectHandle& object, const SchemaHandle& schema,
                          UPDATE_CONTEXT context, const DBStore::ConnectionHandle& connection);

/// The same with layers that are divided already.
void WriteLayersByContext(const ConfigStoreObjectId& id, const ColumnValues& layers,
                          const std::string& version, UPDATE_CONTEXT context,
                          const DBStore::ConnectionHandle& connection);

/// Changes the layers of a row that is there, without counting it as a write: revision and version
/// stay, and a pending value goes only during an upgrade. For maintenance that must not look like a
/// change. No row, nothing done.
void UpdateByContextInternal(const ObjectHandle& object, const SchemaHandle& schema,
                             UPDATE_CONTEXT context, const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
