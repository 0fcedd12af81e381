// Checking configuration objects against the schemas of their types.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "platform/json.h"

#include "validation/guards.h"
#include "validation/rule_sets.h"

#include <vector>

namespace TarnConfigStore {

/// Adds everything that is wrong with an object's data to the list. Answers true when the list is
/// empty. \param quiet  findings are not logged (as code 1083, priority 0)
bool ValidateObjectData(const SchemaHandle& schema, const ObjectHandle& object,
                        const RuleSet& rules, std::vector<ErrorInfo>& errors, bool quiet);

/// Turns a validator's result, an array of {"field", "error"}, into records. Anything else raises
/// the JSON assertion, 1082.
void ConvertFindings(const Json::Value& result, std::vector<ErrorInfo>& errors, bool quiet);

/// Removes empty content from the object, then checks it. Raises ValidationException 1089 with
/// every finding.
void ValidateSet(const SchemaHandle& schema, const ObjectHandle& object);

}  // namespace TarnConfigStore
