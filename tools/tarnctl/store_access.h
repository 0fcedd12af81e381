// The store, as the verbs for objects meet it.
#pragma once

#include "tarnconfigstore/config_store.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

/// Opens the store; raises what ConfigStore::GetStore raises.
std::shared_ptr<TarnConfigStore::ConfigStore> OpenStore();

/// A host that has lost its store says so whatever it is asked, before anybody takes what it has for a
/// host in good order. Raises what GetStore raises, which tells more than other operations do.
void RequireStore();

/// Raises ToolError NOT_FOUND "no object ... is stored".
[[noreturn]] void RaiseNotStored(const TarnConfigStore::ConfigStoreObjectId& id);

/// Raises ToolError NOT_FOUND for a type none of whose stored instances meets the conditions.
[[noreturn]] void RaiseNoInstances(const TarnConfigStore::ConfigStoreObjectId& type,
                                   const std::vector<std::string>& conditions);

}  // namespace tarnctl
