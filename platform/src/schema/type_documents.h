// The two documents that objects of a type carry with them: the id map and the defaults.
#pragma once

#include "json/json_doc.h"
#include "json/type_schema_view.h"

#include <memory>
#include <string_view>

namespace TarnSchemaStore {

/// A JSON object: the key -> idMember where there is one, and each array of instances anywhere in
/// the schema -> the member that holds its elements' instance ids; of arrays of the same name, the
/// one nearest to the root. Empty pointer when nothing has instances.
/// \param place  of the objects
std::shared_ptr<TarnConfigStore::JsonDoc> MakeIdMap(Json::SchemaPlace place, std::string_view key,
                                                    std::string_view idMember);

/// A JSON object of the properties that have a "default". Empty pointer when none has.
std::shared_ptr<TarnConfigStore::JsonDoc> MakeDefaults(Json::SchemaPlace place);

}  // namespace TarnSchemaStore
