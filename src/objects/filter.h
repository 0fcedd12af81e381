// Choosing among the instances of a type.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/filter_spec_object.h"

#include "json/json.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

/// True when one value is part of another: of an object the members given are in the other, of an
/// array each element is part of one of the other's; everything else is equal.
bool IsSubset(const Json::Value& part, const Json::Value& value);

/// Keeps the objects that the filter's data is a subset of (see FilterSpecObject), in their order;
/// the first mismatch of each other one is logged. An empty filter handle keeps all. The objects
/// are of one type. Raises ConfigStoreException 2000 "FilterConfigStoreObjects: Non-Singleton
/// SubObject filtering not supported" when the filter has conditions on an instance of a
/// sub-object, or on an object where that type has instances.
std::vector<std::shared_ptr<ConfigStoreObject>> FilterConfigStoreObjects(
    std::vector<std::shared_ptr<ConfigStoreObject>> objects,
    const std::shared_ptr<FilterSpecObject>& filter);

}  // namespace TarnConfigStore
