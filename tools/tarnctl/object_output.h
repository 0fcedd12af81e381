// Objects, as they are printed.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "object_name.h"
#include "output.h"

#include <memory>
#include <vector>

namespace tarnctl {

/// Prints an object, or one of its members when the path is not empty; an absent member as the
/// default that its schema gives it. ToolError NOT_FOUND when there is neither.
void PrintObject(const TarnConfigStore::ConfigStoreObject& object, const MemberPath& member,
                 const Output& output);

/// Prints an array of objects.
void PrintObjects(const std::vector<std::shared_ptr<TarnConfigStore::ConfigStoreObject>>& objects,
                  const Output& output);

}  // namespace tarnctl
