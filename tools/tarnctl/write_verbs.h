// The verbs that write configuration objects, and the one that only judges them.
#pragma once

#include "tarnconfigstore/contexts.h"

#include "output.h"

#include <string>
#include <vector>

namespace tarnctl {

/// What of an object `set` replaces.
enum class Layer { WHOLE, USER, AUTOMATIC, VITAL, CACHED };

// What is written is what one file ("-" for standard input) or MEMBER=VALUE arguments give. ToolError
// INVALID when that comes to nothing and the store was left as it is.

/// Replaces an object, or one layer of it, and keeps the others.
void SetObject(const std::string& object, const std::vector<std::string>& data, Layer layer);

/// Changes what is given and nothing else.
void UpdateObject(const std::string& object, const std::vector<std::string>& data,
                  TarnConfigStore::USERDATA_CONTEXT context);

/// Prints everything that is wrong with the object that a file ("-" for standard input) holds, and
/// writes nothing to the store. ToolError INVALID when anything is.
void ValidateObject(const std::string& object, const std::string& path, const Output& output);

}  // namespace tarnctl
