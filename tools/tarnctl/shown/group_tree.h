// Objects of several types in one value.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "json_maker.h"
#include "shown/shown_data.h"

#include <memory>
#include <vector>

namespace tarnctl {

/// {group: {key: object or list of instances}}, or, of one group, what is inside of it; nested as in
/// whole documents.
/// \param objects  of one component, in the order of group, key and instance id
Json::Value MakeGroupTree(
    const std::vector<std::shared_ptr<TarnConfigStore::ConfigStoreObject>>& objects,
    bool isOfOneGroup, ShownData shown, JsonMaker& make);

}  // namespace tarnctl
