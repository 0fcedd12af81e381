// Parts of objects, and places in them, on the command line.
#pragma once

#include "tarnconfigstore/parts.h"

#include "command_line.h"

#include <optional>
#include <string>

namespace tarnctl {

inline constexpr const char* kPart = "--part";

/// The option that names a part.
Argument PartArgument(std::string help);

/// The part that was named, if any. Raises ToolError USAGE for what is none that can be changed.
std::optional<TarnConfigStore::ConfigPart> PartOf(const Given& given);

/// A JSON Pointer from what people give for a place in an object: a dotted path, or, where there is a
/// slash in it, a JSON Pointer whose first slash may be missing, as in "portGroups/Backup". Elements of
/// lists of instances are named by their ids. Raises ToolError USAGE for what is neither.
std::string ParsePlaceName(const std::string& text);
/// The same, and for an empty text the empty pointer, which means the whole object.
std::string ParsePlaceNameIfGiven(const std::string& text);

/// How such a place is named.
inline constexpr const char* kPlaceHelp =
    "A dotted path, or names with / between them; elements of lists by their instance ids: "
    "portGroups/Backup";

/// The pointer as people give it.
std::string ShownPlace(const std::string& pointer);

}  // namespace tarnctl
