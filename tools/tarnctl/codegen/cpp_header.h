// A header with accessors for the members of one type.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "json/json.h"

#include <string>

namespace tarnctl {

/// The header for a type, which needs C++17 and tarnconfigstore/typed.h. Its text depends on the type
/// file alone.
/// \param typeFile        a type file that the library takes
/// \param namespaceNames  as "A::B"; empty for TarnTypes::Component::Group
/// Raises ToolError USAGE for what is no name of a namespace.
std::string MakeCppHeader(const Json::Value& typeFile, const std::string& namespaceNames);

}  // namespace tarnctl
