// Choosing instances by MEMBER=VALUE conditions.
#pragma once

#include "tarnconfigstore/filter_spec_object.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

/// A filter that keeps the instances of a type that meet every condition; all of them when there is
/// none. Values are typed as those of AddMembers, and dotted paths become conditions on objects
/// inside. Raises as AddMembers does, ToolError INVALID for members that the type does not have,
/// with each of them, and ConfigStoreException 1037 when the type is not installed.
std::shared_ptr<TarnConfigStore::FilterSpecObject> MakeFilter(
    const TarnConfigStore::ConfigStoreObjectId& type, const std::vector<std::string>& conditions);

}  // namespace tarnctl
