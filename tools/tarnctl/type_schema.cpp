#include "type_schema.h"

#include "tarnconfigstore/type_administration.h"

#include "json/near_miss.h"
#include "json/pointer.h"
#include "json/schema_keywords.h"
#include "json/subschemas.h"

#include <algorithm>
#include <set>
#include <utility>

namespace tarnctl {
namespace {

namespace Keyword = Json::Keyword;

const Json::Value& Anything() {
  static const Json::Value anything(rapidjson::kObjectType);
  return anything;
}

const Json::Value* FindObject(const Json::Value& schema, const char* keyword) {
  const Json::Value* found = Json::FindMember(schema, keyword);
  return found != nullptr && found->IsObject() ? found : nullptr;
}

const Json::Value* FindProperty(const Json::Value& schema, std::string_view name) {
  const Json::Value* properties = FindObject(schema, Keyword::kProperties);
  return properties != nullptr ? Json::FindMember(*properties, name) : nullptr;
}

// A null-valued member counts as absent.
const Json::Value* FindMember(const Json::Value* value, const std::string& name) {
  const Json::Value* found = value != nullptr ? Json::FindMember(*value, name) : nullptr;
  return found != nullptr && !found->IsNull() ? found : nullptr;
}

// When one of the schemas that a schema is composed of applies.
enum class Applies { ALWAYS, PERHAPS, UNDER_CONDITIONS };

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

// One of the schemas that apply at a place, or may, references followed.
struct TypeSchema::Part {
  const Json::Value* schema;
  Applies applies;
};

TypeSchema::TypeSchema(const TarnConfigStore::ConfigStoreObjectId& type)
    : typeFile_(make_.Parse(TarnConfigStore::GetTypeFile(type.component, type.group, type.key))) {
  const Json::Value* schema = Json::FindMember(typeFile_, "schema");
  view_.emplace(schema != nullptr ? *schema : Anything());
}

std::vector<TypeSchema::Part> TypeSchema::PartsOf(Schema schema) const {
  std::vector<Part> parts;
  std::set<std::pair<const Json::Value*, Applies>> seen;
  const auto add = [&](const auto& self, const Json::Value& part, Applies applies) -> void {
    const Part found{&Resolve(part), applies};
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

TypeSchema::Schema TypeSchema::Property(Schema schema, std::string_view name) const {
  std::vector<Part> parts = PartsOf(schema);
  std::erase_if(parts, [](const Part& part) { return part.applies != Applies::ALWAYS; });
  for (const Part& part : parts) {
    if (const Json::Value* property = FindProperty(*part.schema, name)) {
      return *property;
    }
  }
  for (const Part& part : parts) {
    const Json::Value* others = FindObject(*part.schema, Keyword::kAdditionalProperties);
    // Which pattern a name matches is for the validator to say.
    if (others != nullptr && FindObject(*part.schema, Keyword::kPatternProperties) == nullptr) {
      return *others;
    }
  }
  return Anything();
}

TypeSchema::Schema TypeSchema::Items(Schema schema) const {
  const Json::Value* items = FindObject(Resolve(schema), Keyword::kItems);
  return items != nullptr ? *items : Anything();
}

const Json::Value* TypeSchema::Default(Schema schema) const {
  for (const Json::Value* place : view_->References().Chain(schema)) {
    if (const Json::Value* found = Json::FindMember(*place, Keyword::kDefault)) {
      return found;
    }
  }
  return nullptr;
}

ValueKinds TypeSchema::Kinds(Schema schema) const {
  KnownKinds known;
  return Kinds(schema, known);
}

ValueKinds TypeSchema::Kinds(Schema schema, KnownKinds& known) const {
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

ValueKinds TypeSchema::KindsOf(const MemberPath& path) const {
  const Json::Value* schema = &view_->Schema();
  std::string pointer;
  for (const std::string& name : path) {
    if (const ValueKinds kinds = Kinds(*schema); !kinds.Holds(ValueKinds::kObject)) {
      throw ToolError(ExitCode::INVALID,
                      "a path leads through objects only, and here it meets " + kinds.Describe(),
                      TarnConfigStore::CS_INCORRECT_TYPE, {{pointer, "no object"}});
    }
    Json::AppendToken(pointer, name);
    schema = &Property(*schema, name);
  }
  return Kinds(*schema);
}

const Json::Value* TypeSchema::Read(const Json::Value& data, const MemberPath& path) const {
  const Json::Value* schema = &view_->Schema();
  const Json::Value* value = &data;
  for (const std::string& name : path) {
    schema = &Property(*schema, name);
    const Json::Value* member = FindMember(value, name);
    value = member != nullptr ? member : Default(*schema);
  }
  return value;
}

std::string TypeSchema::Suggest(Schema schema, std::string_view name) const {
  Json::NearMiss nearest(name);
  for (const Part& part : PartsOf(schema)) {
    if (const Json::Value* properties = FindObject(*part.schema, Keyword::kProperties)) {
      for (const auto& property : properties->GetObject()) {
        nearest.Offer(Json::Text(property.name));
      }
    }
  }
  return nearest.Best().empty() || nearest.Best() == name
             ? ""
             : "; did you mean \"" + std::string(nearest.Best()) + "\"?";
}

std::string TypeSchema::Suggest(const MemberPath& path) const {
  const Json::Value* schema = &view_->Schema();
  for (const std::string& name : path) {
    if (std::string suggestion = Suggest(*schema, name); !suggestion.empty()) {
      return suggestion;
    }
    schema = &Property(*schema, name);
  }
  return {};
}

bool TypeSchema::MayHave(Schema schema, std::string_view name) const {
  bool isClosed = false;
  for (const Part& part : PartsOf(schema)) {
    const Json::Value* properties = FindObject(*part.schema, Keyword::kProperties);
    const Json::Value* others = Json::FindMember(*part.schema, Keyword::kAdditionalProperties);
    if (FindProperty(*part.schema, name) != nullptr ||
        FindObject(*part.schema, Keyword::kPatternProperties) != nullptr ||
        (others != nullptr && !others->IsFalse())) {
      return true;
    }
    // Conditions and dependencies declare members, but do not close the object to others.
    isClosed = isClosed || (part.applies != Applies::UNDER_CONDITIONS &&
                            (properties != nullptr || others != nullptr));
  }
  return !isClosed;
}

void TypeSchema::FindUndeclared(const Json::Value& data, Schema schema, const std::string& pointer,
                                Findings& findings) const {
  const auto below = [&](std::string_view name) {
    std::string inner = pointer;
    Json::AppendToken(inner, name);
    return inner;
  };
  if (data.IsArray()) {
    for (rapidjson::SizeType i = 0; i < data.Size(); ++i) {
      FindUndeclared(data[i], Items(schema), below(std::to_string(i)), findings);
    }
  } else if (data.IsObject()) {
    for (const auto& [name, value] : data.GetObject()) {
      if (MayHave(schema, Json::Text(name))) {
        FindUndeclared(value, Property(schema, Json::Text(name)), below(Json::Text(name)),
                       findings);
      } else {
        findings.push_back(
            {below(Json::Text(name)), "no such member" + Suggest(schema, Json::Text(name))});
      }
    }
  }
}

Findings TypeSchema::FindUndeclared(const Json::Value& data) const {
  Findings findings;
  FindUndeclared(data, view_->Schema(), {}, findings);
  return findings;
}

}  // namespace tarnctl
