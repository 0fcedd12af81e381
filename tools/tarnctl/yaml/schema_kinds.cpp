#include "yaml/schema_kinds.h"

#include "json/schema_keywords.h"
#include "json/subschemas.h"

#include <unordered_map>

namespace tarnctl {
namespace {

namespace Keyword = Json::Keyword;

using KnownKinds = std::unordered_map<const Json::Value*, ValueKinds>;

ValueKinds Kinds(const Json::Value& schema, const Json::SchemaReferences& references,
                 KnownKinds& known) {
  const Json::Value& resolved = *references.Chain(schema).back();
  // What is met again before it is known adds nothing.
  const auto [entry, isNew] = known.try_emplace(&resolved, ValueKinds::kAll);
  if (!isNew || !resolved.IsObject()) {
    return entry->second;
  }
  ValueKinds kinds(ValueKinds::kAll);
  const auto narrow = [&](const char* keyword, const auto& kindsOf) {
    const Json::Value* given = Json::FindMember(resolved, keyword);
    if (given != nullptr && given->IsArray()) {
      ValueKinds united(0);
      for (const Json::Value& element : given->GetArray()) {
        united = united | kindsOf(element);
      }
      kinds = kinds & united;
    } else if (given != nullptr) {
      kinds = kinds & kindsOf(*given);
    }
  };
  narrow(Keyword::kType, [](const Json::Value& name) {
    return name.IsString() ? ValueKinds::Named(Json::Text(name)) : ValueKinds(0);
  });
  narrow("enum", ValueKinds::Of);
  if (const Json::Value* value = Json::FindMember(resolved, "const")) {
    kinds = kinds & ValueKinds::Of(*value);
  }
  const auto nested = [&](const Json::Value& part) { return Kinds(part, references, known); };
  narrow("anyOf", nested);
  narrow("oneOf", nested);
  Json::ForEachSubschema(resolved, [&](const Json::Value& part, const Json::Subschema& where) {
    if (where.keyword == "allOf") {
      kinds = kinds & nested(part);
    }
  });
  return known.insert_or_assign(&resolved, kinds).first->second;
}

}  // namespace

const Json::Value& AnySchema() {
  static const Json::Value any(rapidjson::kObjectType);
  return any;
}

ValueKinds KindsOf(const Json::Value& schema, const Json::SchemaReferences& references) {
  KnownKinds known;
  return Kinds(schema, references, known);
}

}  // namespace tarnctl
