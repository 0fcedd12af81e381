// The way that every verb takes which writes an object.
#pragma once

#include "tarnconfigstore/config_store.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

using Write = std::function<void(TarnConfigStore::ConfigStore&,
                                 const std::shared_ptr<TarnConfigStore::ConfigStoreObject>&)>;

/// Makes an object of what one file ("-" for standard input) or MEMBER=VALUE arguments give, and
/// writes it. Raises as MakeObject does, and ToolError INVALID when the store was left as it is
/// because the object comes to nothing.
void WriteObject(const TarnConfigStore::ConfigStoreObjectId& id,
                 const std::vector<std::string>& data, const Write& write);

}  // namespace tarnctl
