// The shape of type files, as JSON Schema.
#pragma once

#include "platform/json.h"

namespace TypeFiles {

/// The schema that type files are judged by; compiled once. What it cannot say is said by the rules
/// beside it.
const Json::Value& MetaSchema();

}  // namespace TypeFiles
