#include "platform/schema_store.h"

#include <string>
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

// The name as a token of a JSON Pointer in a URI fragment. Names of types need no escaping, but a
// document may name anything.
std::string Token(std::string_view name) {
  std::string token;
  for (const char character : name) {
    switch (character) {
      case '~':
        token += "~0";
        break;
      case '/':
        token += "~1";
        break;
      default:
        token += character;
    }
  }
  return token;
}

// A type's references are relative to its own root, which now lies deeper.
void MoveReferences(Value& schema, const std::string& root, Allocator& allocator) {
  if (schema.IsArray()) {
    for (Value& element : schema.GetArray()) {
      MoveReferences(element, root, allocator);
    }
  } else if (schema.IsObject()) {
    for (auto& member : schema.GetObject()) {
      if (Json::Text(member.name) == "$ref" && member.value.IsString() &&
          Json::Text(member.value).substr(0, 1) == "#") {
        const std::string moved = "#" + root + std::string(Json::Text(member.value).substr(1));
        member.value = Json::Copy(moved, allocator);
      } else {
        MoveReferences(member.value, root, allocator);
      }
    }
  }
}

Value TypeSchema(const Value& value, const SchemaObject& type, const std::string& root,
                 Allocator& allocator) {
  Value own(type.GetSchemaDocument(), allocator);
  if (!value.IsArray()) {
    MoveReferences(own, root, allocator);
    return own;
  }
  MoveReferences(own, root + "/items", allocator);
  Value schema(rapidjson::kObjectType);
  schema.AddMember("type", "array", allocator);
  schema.AddMember("items", std::move(own), allocator);
  return schema;
}

}  // namespace

void GenerateSchemaDocument(const Value& value, const std::shared_ptr<SchemaObjectCache>& cache,
                            TarnConfigStore::JsonDoc& document) {
  constexpr const char* kProperties = "/properties/";
  Allocator& allocator = document.GetAllocator();
  Value components(rapidjson::kObjectType);
  for (const auto& component : value.GetObject()) {
    Value groups(rapidjson::kObjectType);
    const std::string componentAt = kProperties + Token(Json::Text(component.name));
    if (component.value.IsObject()) {
      for (const auto& group : component.value.GetObject()) {
        Value keys(rapidjson::kObjectType);
        const std::string groupAt = componentAt + kProperties + Token(Json::Text(group.name));
        if (group.value.IsObject()) {
          for (const auto& key : group.value.GetObject()) {
            const auto type = cache->GetSchemaObject(std::string(Json::Text(component.name)),
                                                     std::string(Json::Text(group.name)),
                                                     std::string(Json::Text(key.name)));
            if (type) {
              keys.AddMember(
                  Value(key.name, allocator),
                  TypeSchema(key.value, *type, groupAt + kProperties + Token(Json::Text(key.name)),
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
