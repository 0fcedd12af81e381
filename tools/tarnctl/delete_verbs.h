// The verbs that delete configuration objects.
#pragma once

#include <string>
#include <vector>

namespace tarnctl {

/// Deletes an object. ToolError NOT_FOUND when it is not stored.
void DeleteObject(const std::string& object);

/// Deletes the instances of a type that meet MEMBER=VALUE conditions, all of them when there is
/// none, and says on standard error how many they were. ToolError NOT_FOUND when there are none.
void DeleteInstances(const std::string& type, const std::vector<std::string>& conditions);

}  // namespace tarnctl
