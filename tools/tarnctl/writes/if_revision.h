// Writes that are made over one revision of an object alone.
#pragma once

#include "tarnconfigstore/config_store.h"

#include "command_line.h"

#include <functional>
#include <string>
#include <vector>

namespace tarnctl {

/// --if-revision, of a verb that writes one object.
/// \param excludes  as of Argument
Argument IfRevisionArgument(std::vector<std::string> excludes = {});

/// Makes a write: where --if-revision was given, in one transaction with looking whether the object has
/// that revision, or, for 0, is not stored. Raises ToolError CONFLICT where it is otherwise; nothing is
/// written then. Else raises what the write does.
void AtRevision(TarnConfigStore::ConfigStore& store, const TarnConfigStore::ConfigStoreObjectId& id,
                const Given& given, const std::function<void()>& write);

}  // namespace tarnctl
