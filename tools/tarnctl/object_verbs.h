// The verbs for configuration objects.
#pragma once

#include "output.h"

#include <string>
#include <vector>

namespace tarnctl {

/// Prints an object, or one of its members when `member` is not empty. ToolError NOT_FOUND when
/// there is no such object or member.
void GetObject(const std::string& object, const std::string& member, const Output& output);

/// Replaces an object by what one file ("-" for standard input) or MEMBER=VALUE arguments give.
void SetObject(const std::string& object, const std::vector<std::string>& data);

/// Prints everything that is wrong with the object that a file ("-" for standard input) holds, and
/// writes nothing to the store. ToolError INVALID when anything is.
void ValidateObject(const std::string& object, const std::string& path, const Output& output);

/// Prints what is stored under a prefix; an empty one for everything.
void ListObjects(const std::string& prefix, const Output& output);

/// Prints the revision. ToolError NOT_FOUND for an object that is not stored.
void ShowRevision(const std::string& object, const Output& output);

}  // namespace tarnctl
