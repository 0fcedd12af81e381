// Places in an object's data by names that stay the same while the data change: members by their
// names, and elements of lists of instances by their ids.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// The names on the way to a place, the tokens of its JSON Pointer.
using PlaceNames = std::vector<std::string>;

/// An element of a list by its instance id, or null; null, too, where elements have no ids.
const Json::Value* FindInstance(const Json::Value& list, std::string_view idMember,
                                std::string_view id);

/// What names lead to, or null.
const Json::Value* FindByIds(const Json::Value& value, Json::SchemaPlace place,
                             const PlaceNames& names);
inline Json::Value* FindByIds(Json::Value& value, Json::SchemaPlace place,
                              const PlaceNames& names) {
  return const_cast<Json::Value*>(FindByIds(static_cast<const Json::Value&>(value), place, names));
}
/// The same by a pointer; null for what is none.
const Json::Value* FindByIds(const Json::Value& value, Json::SchemaPlace place,
                             const std::string& pointer);

/// Takes away what names lead to, and the objects and lists around it that this leaves empty, as far
/// as nothing requires them, nor in them what went, and they have no defaults: what reads back the same
/// without them. Elements stay. Answers whether there was anything.
bool EraseByIds(Json::Value& value, Json::SchemaPlace place, const PlaceNames& names);

/// What names lead to, in the objects and elements on the way, which hold nothing else but their ids;
/// null where they lead nowhere.
Json::Value CopyByIds(const Json::Value& value, Json::SchemaPlace place, const PlaceNames& names,
                      Json::Allocator& allocator);

}  // namespace TarnConfigStore
