// Laying one configuration object over another.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "json/json.h"
#include "json/type_schema_view.h"

#include <memory>

namespace TarnConfigStore {

/// Lays a source value over a target: objects merge member by member; arrays whose elements have
/// instance ids merge by id, new elements following in the source's order; everything else is
/// replaced by the source's. A null-valued member adds nothing.
void MergeValue(const Json::Value& source, Json::Value& target, Json::SchemaPlace schema,
                Json::Allocator& allocator);
/// The same of a source whose memory is the target's; what is left of it is of no use.
void MergeValue(Json::Value&& source, Json::Value& target, Json::SchemaPlace schema,
                Json::Allocator& allocator);

/// Lays the properties of one configuration object over another and returns the result: the target,
/// or, where the target is empty, the source. Both may be empty pointers.
/// \param schema  what their type says of the whole object
std::shared_ptr<ConfigStoreObject> UpdateConfigInternal(
    const std::shared_ptr<ConfigStoreObject>& source,
    const std::shared_ptr<ConfigStoreObject>& target, Json::SchemaPlace schema);

/// Lays a, then b, then c over the base. Layers may be empty pointers; the first that is not is the
/// base.
std::shared_ptr<ConfigStoreObject> MergeConfig(const std::shared_ptr<ConfigStoreObject>& base,
                                               const std::shared_ptr<ConfigStoreObject>& a,
                                               const std::shared_ptr<ConfigStoreObject>& b,
                                               const std::shared_ptr<ConfigStoreObject>& c,
                                               Json::SchemaPlace schema);

}  // namespace TarnConfigStore
