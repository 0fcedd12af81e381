// Writes of one object each, as their verbs' arguments say them.
#pragma once

#include "given/given_object.h"

namespace tarnctl {

// What can be told without a store is told here. Raise as PrepareObject, and ToolError USAGE for
// arguments of another form; the writes what the library raises, and ToolError CONFLICT where
// --if-revision names another revision.

PreparedWrite PrepareSet(const Given& given, const ObjectData& data);
PreparedWrite PrepareUpdate(const Given& given, const ObjectData& data);
/// Raises as RefuseStagedType, too; the write ToolError NOT_FOUND, with each member that is not set.
PreparedWrite PrepareUnset(const Given& given);
/// The write raises ToolError NOT_FOUND where nothing is stored.
PreparedWrite PrepareDelete(const Given& given);

/// Raises ToolError INVALID for a type whose members are not taken back at once.
void RefuseStagedType(const TarnConfigStore::ConfigStoreObjectId& id);

inline constexpr const char* kPendingWent = "what was pending for the next boot went with it";

}  // namespace tarnctl
