#include "platform/schema_store.h"

#include "json/pointer.h"
#include "json/schema_references.h"

#include <string>
#include <unordered_map>
#include <utility>

namespace TarnSchemaStore {
namespace {

using Json::Allocator;
using Json::Value;

Value ObjectSchema(Value&& properties, Allocator& allocator) {
  Value schema(rapidjson::kObjectType);
  schema.AddMember("type", "object", allocator);
  schema.AddMember("properties", std::move(properties), allocator);
  return schema;
}

std::string Below(std::string pointer, std::string_view name) {
  Json::AppendToken(pointer, name);
  return pointer;
}

// Calls `visit(value, pointer)` for a value and everything in it.
template <class Visit>
void ForEachValue(const Value& value, const std::string& pointer, const Visit& visit) {
  visit(value, pointer);
  if (value.IsArray()) {
    for (rapidjson::SizeType i = 0; i < value.Size(); ++i) {
      ForEachValue(value[i], Below(pointer, std::to_string(i)), visit);
    }
  } else if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      ForEachValue(member.value, Below(pointer, Json::Text(member.name)), visit);
    }
  }
}

std::string AsFragment(std::string_view pointer) {
  std::string fragment = "#";
  for (const char c : pointer) {
    fragment += c == '%' ? std::string("%25") : std::string(1, c);
  }
  return fragment;
}

// A type's references are relative to its own root, which now lies deeper, beside other types that
// may give the same names ("$id") to other things: each becomes a pointer to what it leads to.
void MoveReferences(const Value& type, Value& copy, const std::string& root, Allocator& allocator) {
  const Json::SchemaReferences references(type);
  std::unordered_map<const Value*, std::string> places;
  ForEachValue(type, {}, [&](const Value& value, const std::string& pointer) {
    places.emplace(&value, pointer);
  });
  for (const auto& [value, pointer] : places) {
    if (!references.IsSchema(*value)) {
      continue;
    }
    Value& moved = const_cast<Value&>(*Json::FindAt(copy, *Json::ParsePointer(pointer)));
    const Json::SchemaReferences::Target* target = references.Find(*value);
    if (target != nullptr && target->schema != nullptr) {
      moved["$ref"] = Json::Copy(AsFragment(root + places.at(target->schema)), allocator);
    }
    moved.RemoveMember("$id");
  }
}

Value TypeSchema(const Value& value, const SchemaObject& type, const std::string& root,
                 Allocator& allocator) {
  Value own(type.GetSchemaDocument(), allocator);
  if (!value.IsArray()) {
    MoveReferences(type.GetSchemaDocument(), own, root, allocator);
    return own;
  }
  MoveReferences(type.GetSchemaDocument(), own, root + "/items", allocator);
  Value schema(rapidjson::kObjectType);
  schema.AddMember("type", "array", allocator);
  schema.AddMember("items", std::move(own), allocator);
  return schema;
}

}  // namespace

void GenerateSchemaDocument(const Value& value, const std::shared_ptr<SchemaObjectCache>& cache,
                            TarnConfigStore::JsonDoc& document) {
  constexpr const char* kProperties = "/properties";
  Allocator& allocator = document.GetAllocator();
  Value components(rapidjson::kObjectType);
  for (const auto& component : value.GetObject()) {
    Value groups(rapidjson::kObjectType);
    const std::string componentAt = Below(kProperties, Json::Text(component.name));
    if (component.value.IsObject()) {
      for (const auto& group : component.value.GetObject()) {
        Value keys(rapidjson::kObjectType);
        const std::string groupAt = Below(componentAt + kProperties, Json::Text(group.name));
        if (group.value.IsObject()) {
          for (const auto& key : group.value.GetObject()) {
            const auto type = cache->GetSchemaObject(std::string(Json::Text(component.name)),
                                                     std::string(Json::Text(group.name)),
                                                     std::string(Json::Text(key.name)));
            if (type) {
              keys.AddMember(
                  Value(key.name, allocator),
                  TypeSchema(key.value, *type, Below(groupAt + kProperties, Json::Text(key.name)),
                             allocator),
                  allocator);
            }
          }
        }
        groups.AddMember(Value(group.name, allocator), ObjectSchema(std::move(keys), allocator),
                         allocator);
      }
    }
    components.AddMember(Value(component.name, allocator),
                         ObjectSchema(std::move(groups), allocator), allocator);
  }
  *document.GetJsonValuePtr() = ObjectSchema(std::move(components), allocator);
}

}  // namespace TarnSchemaStore
