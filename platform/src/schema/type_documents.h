// The two documents that objects of a type carry with them: the id map and the defaults.
#pragma once

#include "platform/json_doc.h"

#include <memory>
#include <string_view>

namespace TarnSchemaStore {

/// A JSON object: the key -> idMember where there is one, and each array of instances anywhere in
/// the schema
/// -> the member that holds its elements' instance ids; of arrays of the same name, the one nearest
/// to the root. Empty pointer when nothing has instances.
std::shared_ptr<TarnConfigStore::JsonDoc> MakeIdMap(const Json::Value& root,
                                                    const Json::Value& schema, std::string_view key,
                                                    std::string_view idMember);

/// A JSON object of the properties that have a "default". Empty pointer when none has.
std::shared_ptr<TarnConfigStore::JsonDoc> MakeDefaults(const Json::Value& root,
                                                       const Json::Value& schema);

}  // namespace TarnSchemaStore
