// What lists say of types, stored objects and staged changes.
#pragma once

#include "tarnconfigstore/apply_next_boot.h"
#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/type_administration.h"

#include "json_maker.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnctl {

/// The name under which the store keeps an action.
const char* NameAction(TarnConfigStore::NextBootAction action);

Json::Value Describe(const TarnConfigStore::InstalledType& type, JsonMaker& make);
Json::Value Describe(const TarnConfigStore::StoredObject& object, JsonMaker& make);
/// As a stored object, and the version that is installed.
Json::Value Describe(const TarnConfigStore::OutdatedObject& object, JsonMaker& make);
Json::Value Describe(const TarnConfigStore::StagedChange& change, JsonMaker& make);

/// An array of {"pointer", "base", "staged", "current"}; of the last three those that there are.
Json::Value DescribeConflicts(const std::vector<TarnConfigStore::ChangeConflict>& conflicts,
                              JsonMaker& make);
/// Adds those three members.
void AddSides(Json::Value& object, const std::optional<std::string>& base,
              const std::optional<std::string>& staged, const std::optional<std::string>& current,
              JsonMaker& make);

/// An array of all changes that are staged under a prefix.
Json::Value DescribeStaged(const TarnConfigStore::ConfigStoreObjectId& prefix, JsonMaker& make);

/// An array of the names of the types that need a reboot.
Json::Value ListRebootTypes(JsonMaker& make);

}  // namespace tarnctl
