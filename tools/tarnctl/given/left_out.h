// What the library leaves out of lists of instances.
#pragma once

#include "json/json.h"

#include <string>
#include <vector>

namespace tarnctl {

/// JSON Pointers of the empty elements of what was given that are not in what was written of it.
std::vector<std::string> FindLeftOut(const Json::Value& given, const Json::Value& written);

}  // namespace tarnctl
