// Walking through all that a type describes.
#pragma once

#include "tarnconfigstore/explain.h"

#include "platform/schema_store.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// What DescribeType tells of the members of a type, whatever is installed.
std::vector<MemberDescription> DescribeMembers(const TarnSchemaStore::SchemaObject& type,
                                               const std::string& place, bool reveal);

}  // namespace TarnConfigStore
