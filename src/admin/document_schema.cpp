#include "tarnconfigstore/type_administration.h"

#include "platform/schema_store.h"

#include "admin/plain_schema.h"
#include "errors/platform_failures.h"
#include "json/json_doc.h"

#include <utility>

namespace TarnConfigStore {
namespace {

using Json::Allocator;
using Json::Value;

Value TypeSchema(const char* type, Allocator& allocator) {
  Value schema(rapidjson::kObjectType);
  schema.AddMember("type", Json::Reference(type), allocator);
  return schema;
}

// An object with these members and no others.
Value ObjectSchema(Value&& members, Allocator& allocator) {
  Value schema = TypeSchema("object", allocator);
  schema.AddMember("properties", members, allocator);
  schema.AddMember("additionalProperties", false, allocator);
  return schema;
}

// The member of a name, made where there is none.
Value& Member(Value& object, const std::string& name, Allocator& allocator) {
  if (Value* found = Json::FindMember(object, name)) {
    return *found;
  }
  object.AddMember(Json::Copy(name, allocator), Value(rapidjson::kObjectType), allocator);
  return (object.MemberEnd() - 1)->value;
}

Value WithInstances(Value&& object, Allocator& allocator) {
  Value list = TypeSchema("array", allocator);
  list.AddMember("items", object, allocator);
  return list;
}

// {component: {group: {key: schema}}} of all types that are installed.
Value CollectTypes(Value& definitions, Allocator& allocator) {
  const auto cache = TarnSchemaStore::SchemaStore::GetCache();
  Value types(rapidjson::kObjectType);
  for (const TarnSchemaStore::TypeName& name : cache->GetTypes()) {
    const auto type = cache->GetSchemaObject(name.component, name.group, name.key);
    if (!type) {
      continue;  // removed meanwhile
    }
    const std::string definition = name.component + "." + name.group + "." + name.key;
    Value object = PlainSchema(definition, type->GetSchemaDocument(), definitions, allocator)
                       .Add(type->IsNonSingleton());
    Value& group = Member(Member(types, name.component, allocator), name.group, allocator);
    group.AddMember(
        Json::Copy(name.key, allocator),
        type->IsNonSingleton() ? WithInstances(std::move(object), allocator) : std::move(object),
        allocator);
  }
  return types;
}

Value ConfigSchema(Value&& types, Allocator& allocator) {
  for (auto& component : types.GetObject()) {
    for (auto& group : component.value.GetObject()) {
      group.value = ObjectSchema(std::move(group.value), allocator);
    }
    component.value = ObjectSchema(std::move(component.value), allocator);
  }
  return ObjectSchema(std::move(types), allocator);
}

// What programs write beside the configuration itself is left open.
Value Sections(Value&& config, Allocator& allocator) {
  Value format(rapidjson::kObjectType);
  format.AddMember("const", 1, allocator);
  Value sections(rapidjson::kObjectType);
  sections.AddMember("format", format, allocator);
  sections.AddMember("config", config, allocator);
  for (const char* open : {"automatic", "vital", "cached", "pending", "staged", "metadata"}) {
    sections.AddMember(Json::Reference(open), TypeSchema("object", allocator), allocator);
  }
  return sections;
}

}  // namespace

std::string ExportDocumentSchema() {
  JsonDoc document;
  Allocator& allocator = document.GetAllocator();
  Value& root = *document.GetJsonValuePtr();
  Value definitions(rapidjson::kObjectType);
  Value types = WithStoreFailures([&] { return CollectTypes(definitions, allocator); });
  root = ObjectSchema(Sections(ConfigSchema(std::move(types), allocator), allocator), allocator);
  root.AddMember("$schema", "http://json-schema.org/draft-07/schema#", allocator);
  root.AddMember("title", "Configuration of a host", allocator);
  Value required(rapidjson::kArrayType);
  required.PushBack("format", allocator).PushBack("config", allocator);
  root.AddMember("required", required, allocator);
  root.AddMember("definitions", definitions, allocator);
  std::string text;
  Json::Serialize(root, text);
  return text;
}

}  // namespace TarnConfigStore
