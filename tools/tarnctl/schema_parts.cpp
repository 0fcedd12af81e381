#include "schema_parts.h"

#include "json/schema_keywords.h"
#include "json/subschemas.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace tarnctl {
namespace {

namespace Keyword = Json::Keyword;

std::optional<Applies> AppliesUnder(std::string_view keyword) {
  if (keyword == "allOf") {
    return Applies::ALWAYS;
  }
  if (keyword == "anyOf" || keyword == "oneOf") {
    return Applies::PERHAPS;
  }
  if (keyword == "if" || keyword == "then" || keyword == "else" || keyword == "dependencies") {
    return Applies::UNDER_CONDITIONS;
  }
  return std::nullopt;
}

}  // namespace

const Json::Value& AnySchema() {
  static const Json::Value any(rapidjson::kObjectType);
  return any;
}

const Json::Value* FindObject(const Json::Value& schema, const char* keyword) {
  const Json::Value* found = Json::FindMember(schema, keyword);
  return found != nullptr && found->IsObject() ? found : nullptr;
}

const Json::Value* FindProperty(const Json::Value& schema, std::string_view name) {
  const Json::Value* properties = FindObject(schema, Keyword::kProperties);
  return properties != nullptr ? Json::FindMember(*properties, name) : nullptr;
}

std::vector<SchemaPart> SchemaParts::Of(const Json::Value& schema) const {
  std::vector<SchemaPart> parts;
  std::set<std::pair<const Json::Value*, Applies>> seen;
  const auto add = [&](const auto& self, const Json::Value& part, Applies applies) -> void {
    const SchemaPart found{&Resolve(part), applies};
    if (!seen.emplace(found.schema, found.applies).second) {
      return;
    }
    parts.push_back(found);
    Json::ForEachSubschema(*found.schema,
                           [&](const Json::Value& inner, const Json::Subschema& where) {
                             if (const auto innerApplies = AppliesUnder(where.keyword)) {
                               self(self, inner, std::max(applies, *innerApplies));
                             }
                           });
  };
  add(add, schema, Applies::ALWAYS);
  return parts;
}

ValueKinds SchemaParts::Kinds(const Json::Value& schema) const {
  KnownKinds known;
  return Kinds(schema, known);
}

ValueKinds SchemaParts::Kinds(const Json::Value& schema, KnownKinds& known) const {
  const Json::Value& resolved = Resolve(schema);
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
  const auto nested = [&](const Json::Value& part) { return Kinds(part, known); };
  narrow("anyOf", nested);
  narrow("oneOf", nested);
  Json::ForEachSubschema(resolved, [&](const Json::Value& part, const Json::Subschema& where) {
    if (where.keyword == "allOf") {
      kinds = kinds & nested(part);
    }
  });
  return known.insert_or_assign(&resolved, kinds).first->second;
}

}  // namespace tarnctl
