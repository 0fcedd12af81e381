// What rows become at the next boot.
#pragma once

#include "persistence/type_rows.h"

#include <optional>

namespace TarnConfigStore {

/// A row once a boot has gone well: what is pending in it is the user's, and it is confirmed.
StoredRow AfterBoot(const StoredRow& row);

/// Applies a staged change to the row of its own identifier, or of one of the type whose deletion it
/// is, that a boot has taken already: empty for a row that is not there, or no longer. The change is a
/// row as ForEachStagedChange gives it.
void ApplyStaged(const RowMap& change, std::optional<StoredRow>& row);

}  // namespace TarnConfigStore
