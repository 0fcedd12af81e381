// The staged changes, and what keeps each from being applied.
#pragma once

#include "tarnconfigstore/apply_next_boot.h"

#include "platform/db_store.h"

#include "objects/division.h"
#include "objects/handles.h"

#include <optional>
#include <vector>

namespace TarnConfigStore {

/// A staged change on its way.
struct JudgedChange {
  ConfigStoreObjectId id;
  NextBootAction action;
  SchemaHandle schema = {};                 ///< of content, when its type is installed
  ObjectHandle content = {};                ///< where it is to be divided
  std::optional<ColumnValues> layers = {};  ///< of it, where they are known
  std::vector<ErrorInfo> findings = {};
  std::vector<ChangeConflict> conflicts = {};
  bool merged = false;
  bool isRecordedAnew = false;  ///< before it is applied
  bool drops = false;           ///< what is current stays: unstaged without being applied
  bool fits = false;            ///< to be applied
};

/// Reads all that is staged, in the order in which it is applied, and finds out what fits. Raises as
/// ForEachStagedChange, and ConfigStoreException 2000 "Get failed: IDENTIFIER".
std::vector<JudgedChange> JudgeStagedChanges(const ApplyOptions& options,
                                             const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
