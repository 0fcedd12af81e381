// Staged changes that give an object content, seen through the type of today.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "persistence/row_objects.h"

#include <vector>

namespace TarnConfigStore {

/// The content of a staged change, its parts merged, and everything that keeps it from becoming
/// current, judged as one object that is to be set. Empty where there is no object to be had, which
/// is a finding.
/// \param row   has the parts as "UserValue", "VitalValue" and "CachedValue"
/// \param type  empty when it is not installed
ObjectHandle JudgeStagedContent(const RowMap& row, const ConfigStoreObjectId& id,
                                const SchemaHandle& type, std::vector<ErrorInfo>& findings);

}  // namespace TarnConfigStore
