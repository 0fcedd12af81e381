// The shape of type files, as JSON Schema.
#pragma once

#include "json/json.h"

#include <string>
#include <string_view>

namespace TypeFiles {

/// The schema that type files are judged by; compiled once. What it cannot say is said by the rules
/// beside it.
const Json::Value& MetaSchema();

/// Whether JSON Schema draft-07, type files or editors give this member of a schema a meaning.
bool IsKeyword(std::string_view name);

/// What is said of a member that is no keyword, with the keyword that may have been meant.
std::string WhyNoKeyword(std::string_view name);

}  // namespace TypeFiles
