// Telling user data from vital and cached data.
#pragma once

#include "validation/guards.h"

namespace TarnConfigStore {

/// True when at least one leaf of the object's data is governed by schema nodes none of which, on
/// the way down, is tagged vital or cached; instance ids never make an object user data. Never
/// throws.
bool isUserType(const ObjectHandle& object, const SchemaHandle& schema);

}  // namespace TarnConfigStore
