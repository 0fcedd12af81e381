// Questions about the nodes of a type's schema. All accept any JSON value, sound schema or not.
#pragma once

#include "platform/json.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace TarnSchemaStore {

/// What a local "$ref" ("#/definitions/name" and the like) finally names. The node itself where it
/// has none, or one that leads nowhere or in a circle.
const Json::Value& ResolveReference(const Json::Value& root, const Json::Value& node);

/// The "properties" of an object's schema, or null.
const Json::Value* PropertiesOf(const Json::Value& objectSchema);

/// The single schema of all elements of an array, "$ref" not yet followed, or null.
const Json::Value* ElementsOf(const Json::Value& arraySchema);

/// Whether values of this schema can be JSON objects, going by its "type".
bool DescribesObject(const Json::Value& schema);

/// Name of the member that holds the instance id of an object, or an empty text.
std::string_view InstanceIdMember(const Json::Value& root, const Json::Value& objectSchema);

/// The same for the elements of an array; "cs_generated_id" where the store gives them their
/// identifiers.
std::string_view ElementIdMember(const Json::Value& root, const Json::Value& arraySchema);

/// Kinds of data, as bits.
enum Kind : unsigned { KIND_NONE = 0, KIND_USER = 1, KIND_VITAL = 2, KIND_CACHED = 4 };

/// The kind that a node's own tag gives to it and what is under it, or the kind around it.
Kind KindOf(const Json::Value& node, Kind around);

/// Kinds of all the leaves under a node, instance ids left out.
/// \param around  the kind of what the node stands in
unsigned KindsOfLeaves(const Json::Value& root, const Json::Value& node, Kind around);

/// "~" and "/" of a member's name, written as a JSON Pointer wants them (RFC 6901).
std::string EscapePointerToken(std::string_view name);

}  // namespace TarnSchemaStore
