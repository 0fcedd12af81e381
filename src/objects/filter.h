// Choosing among the instances of a type.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/filter_spec_object.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

/// Keeps the objects that the filter's data is a subset of (see FilterSpecObject), in their order;
/// the first mismatch of each other one is logged. An empty filter handle keeps all.
std::vector<std::shared_ptr<ConfigStoreObject>> FilterConfigStoreObjects(
    std::vector<std::shared_ptr<ConfigStoreObject>> objects,
    const std::shared_ptr<FilterSpecObject>& filter);

}  // namespace TarnConfigStore
