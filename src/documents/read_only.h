// Members that a document may repeat, but not change.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "platform/schema_store.h"

#include "json/json.h"

#include <vector>

namespace TarnConfigStore {

/// Adds a finding for each read-only member of a value that is to be applied, unless the stored value
/// has the same there. Elements of lists of instances are found by their ids, others by their places.
/// \param stored  null where nothing is stored
void FindReadOnlyChanges(const Json::Value& value, const Json::Value* stored,
                         const TarnSchemaStore::SchemaObject& type,
                         std::vector<ErrorInfo>& findings);

}  // namespace TarnConfigStore
