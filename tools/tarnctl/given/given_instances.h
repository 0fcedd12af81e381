// All instances of a type, from a file.
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/dry_run.h"

#include "given/given_data.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

struct GivenInstances {
  GivenData source;  ///< a list of objects
  std::vector<std::shared_ptr<TarnConfigStore::ConfigStoreObject>> objects;
  /// Elements that are no instances: no objects, without an id, or with that of an earlier one. There
  /// are no objects then. Places lead into the list, lines are told.
  Findings faults;
};

/// Raises as GivenData::Read, and what the store raises for a type that has no instances.
GivenInstances ReadInstances(const TarnConfigStore::ConfigStoreObjectId& type,
                             const std::string& path);

/// All that a write of them would refuse: the faults, and the findings of each object.
Findings FindFaults(const GivenInstances& given, TarnConfigStore::WriteKind kind);

using WriteInstances =
    std::function<void(TarnConfigStore::ConfigStore&,
                       const std::vector<std::shared_ptr<TarnConfigStore::ConfigStoreObject>>&)>;

/// Writes them, and says how many. Raises ToolError INVALID, with all findings of all objects, where
/// there are any or the list is empty; nothing is written then.
void WriteGivenInstances(const TarnConfigStore::ConfigStoreObjectId& type, const std::string& path,
                         TarnConfigStore::WriteKind kind, const WriteInstances& write);

}  // namespace tarnctl
