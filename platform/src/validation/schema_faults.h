// What keeps a schema from being used, told to people.
#pragma once

#include "platform/json.h"

#include "validation/compiled_schema.h"

#include <string>

namespace JsonValidator {

/// The JSON Pointer of a value inside a schema; "/" for the root.
std::string PointerTo(const Json::Value& schema, const Json::Value& inside);

/// The faults in one sentence.
std::string FaultsInWords(const CompiledSchema& schema);

}  // namespace JsonValidator
