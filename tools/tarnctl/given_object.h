// Objects made from what the user gives.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "failure.h"
#include "type_schema.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

/// An object with the data of a file, or of standard input for "-". Raises ToolError INVALID, with
/// the reason as a finding, for data that is no JSON object, and FAILED when it cannot be read.
std::shared_ptr<TarnConfigStore::ConfigStoreObject> ReadObject(
    const TarnConfigStore::ConfigStoreObjectId& id, const std::string& path);

/// An object with what one file ("-" for standard input) or MEMBER=VALUE arguments give. Data
/// without the instance id gets the one of the object's name. Raises as ReadObject and AddMembers
/// do, and ToolError INVALID for data of another instance.
std::shared_ptr<TarnConfigStore::ConfigStoreObject> MakeObject(
    const TarnConfigStore::ConfigStoreObjectId& id, const std::vector<std::string>& data,
    const TypeSchema& schema);

/// Gives data without the instance id the one of the object's name; any other instance id is the
/// finding that is returned.
Findings KeepInstanceId(TarnConfigStore::ConfigStoreObject& object, const TypeSchema& schema);

}  // namespace tarnctl
