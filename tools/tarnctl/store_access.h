// The store, as the verbs for objects meet it.
#pragma once

#include "tarnconfigstore/config_store.h"

#include <memory>

namespace tarnctl {

/// Opens the store; raises what ConfigStore::GetStore raises.
std::shared_ptr<TarnConfigStore::ConfigStore> OpenStore();

/// Raises ToolError NOT_FOUND "no object ... is stored".
[[noreturn]] void RaiseNotStored(const TarnConfigStore::ConfigStoreObjectId& id);

}  // namespace tarnctl
