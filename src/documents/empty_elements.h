// Elements of lists of instances that say nothing.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "json/json.h"
#include "json/type_schema_view.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// Adds a finding for each: a write would leave it out without a word.
/// \param pointer  of the value
void FindEmptyElements(const Json::Value& value, Json::SchemaPlace place,
                       const std::string& pointer, std::vector<ErrorInfo>& findings);

}  // namespace TarnConfigStore
