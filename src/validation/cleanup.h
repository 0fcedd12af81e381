// Removing empty content before an object is validated.
#pragma once

#include "validation/guards.h"

namespace TarnConfigStore {

/// Removes, at any depth, members and array elements that are or become empty objects or arrays,
/// and the instance id of the object itself, or of an element that lost everything else, when it is
/// all that is left. Only user data is cleaned: vital and cached parts stay as they are. Each
/// removal is logged at priority 2.
void CleanupObject(const ObjectHandle& object, const SchemaHandle& schema);

}  // namespace TarnConfigStore
