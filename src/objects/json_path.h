// Finding a value by its JSON Pointer.
#pragma once

#include "json/json.h"

#include <string>

namespace TarnConfigStore {

/// The value that a JSON Pointer (RFC 6901) leads to, or null when there is none. The members that
/// hold generated instance ids are not there for pointers. Raises InvalidArgumentException 2000
/// when the text is no pointer: not empty and not beginning with "/", or with a "~" that is
/// followed neither by "0" nor by "1".
const Json::Value* FindPath(const Json::Value& root, const std::string& pointer);

}  // namespace TarnConfigStore
