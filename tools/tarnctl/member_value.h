// Objects made from MEMBER=VALUE arguments.
#pragma once

#include "json_text.h"
#include "type_schema.h"

#include <string>
#include <vector>

namespace tarnctl {

/// Adds what the arguments give to an object's data. Each value takes the type that the schema
/// gives its member; a member of several types takes JSON text that fits one of them, and else the
/// text itself where texts are allowed. Raises ToolError INVALID for a value that does not fit, and
/// USAGE for an argument without "=", a member given twice and a member inside one that was given
/// as something else than an object.
void AddMembers(Json& data, const std::vector<std::string>& arguments, const TypeSchema& schema);

}  // namespace tarnctl
