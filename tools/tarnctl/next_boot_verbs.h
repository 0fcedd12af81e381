// The verbs that stage changes for the next boot, show them and take them back.
#pragma once

#include "output.h"

#include <string>
#include <vector>

namespace tarnctl {

// The current configuration stays as it is until the staged changes are applied. All but the listing
// raise ValidationException 2000 for a type that needs no reboot, and while the host boots or is
// upgraded.

/// Prints the content that is staged for an object, or one of its members when `member` is not
/// empty. ToolError NOT_FOUND when there is none, or no such member.
void GetStaged(const std::string& object, const std::string& member, const Output& output);

/// Prints the staged instances of a type that meet MEMBER=VALUE conditions, as an array in the order
/// of their ids.
void GetStagedInstances(const std::string& type, const std::vector<std::string>& conditions,
                        const Output& output);

/// Stages what one file ("-" for standard input) or MEMBER=VALUE arguments give as an object's whole
/// content. Raises as MakeObject does.
void StageObject(const std::string& object, const std::vector<std::string>& data);

/// Stages the deletion of an object. ToolError NOT_FOUND when it is neither stored nor staged.
void StageDelete(const std::string& object);

/// Stages the deletion of the stored instances of a type that meet MEMBER=VALUE conditions, and says
/// on standard error how many they are. ToolError NOT_FOUND when there are none.
void StageDeleteInstances(const std::string& type, const std::vector<std::string>& conditions);

/// Takes back all that is staged for an object's type, other instances included, and names on
/// standard error what that was. ToolError NOT_FOUND when it was nothing.
void ResetStaged(const std::string& object);

/// Prints what is staged under a prefix; an empty one for everything.
void ListStagedChanges(const std::string& prefix, const Output& output);

}  // namespace tarnctl
