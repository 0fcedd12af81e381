#include "store/type_schema.h"

#include "tarnconfigstore/type_administration.h"

#include "json/near_miss.h"
#include "json/pointer.h"
#include "json/schema_keywords.h"
#include "json/schema_parts.h"

#include <utility>
#include <vector>

namespace tarnctl {
namespace {

namespace Keyword = Json::Keyword;

// A schema that says nothing.
const Json::Value& AnySchema() {
  static const Json::Value any(rapidjson::kObjectType);
  return any;
}

// A null-valued member counts as absent.
const Json::Value* FindMember(const Json::Value* value, const std::string& name) {
  const Json::Value* found = value != nullptr ? Json::FindMember(*value, name) : nullptr;
  return found != nullptr && !found->IsNull() ? found : nullptr;
}

}  // namespace

TypeSchema::TypeSchema(const TarnConfigStore::ConfigStoreObjectId& type)
    : typeFile_(make_.Parse(TarnConfigStore::GetTypeFile(type.component, type.group, type.key))) {
  const Json::Value* schema = Json::FindMember(typeFile_, "schema");
  view_.emplace(schema != nullptr ? *schema : AnySchema());
  places_.emplace(view_->References(), view_->Schema());
}

TypeSchema::Schema TypeSchema::Property(Schema schema, std::string_view name) const {
  std::vector<Json::SchemaPart> parts = Json::PartsOf(schema, view_->References());
  std::erase_if(parts,
                [](const Json::SchemaPart& part) { return part.applies != Json::Applies::ALWAYS; });
  for (const Json::SchemaPart& part : parts) {
    if (const Json::Value* property = Json::FindProperty(*part.schema, name)) {
      return *property;
    }
  }
  for (const Json::SchemaPart& part : parts) {
    const Json::Value* others = Json::FindObject(*part.schema, Keyword::kAdditionalProperties);
    // Which pattern a name matches is for the validator to say.
    if (others != nullptr &&
        Json::FindObject(*part.schema, Keyword::kPatternProperties) == nullptr) {
      return *others;
    }
  }
  return AnySchema();
}

TypeSchema::Schema TypeSchema::Items(Schema schema) const {
  const Json::Value* items =
      Json::FindObject(*view_->References().Chain(schema).back(), Keyword::kItems);
  return items != nullptr ? *items : AnySchema();
}

const Json::Value* TypeSchema::Default(Schema schema) const {
  for (const Json::Value* place : view_->References().Chain(schema)) {
    if (const Json::Value* found = Json::FindMember(*place, Keyword::kDefault)) {
      return found;
    }
  }
  return nullptr;
}

ValueKinds TypeSchema::KindsOf(const MemberPath& path) const {
  ValuePlace place = Root();
  std::string pointer;
  for (const std::string& name : path) {
    if (const ValueKinds kinds = place.Kinds(); !kinds.Holds(ValueKinds::kObject)) {
      throw ToolError(ExitCode::INVALID,
                      "a path leads through objects only, and here it meets " + kinds.Describe(),
                      TarnConfigStore::CS_INCORRECT_TYPE, {{pointer, "no object"}});
    }
    Json::AppendToken(pointer, name);
    place = place.Member(name);
  }
  return place.Kinds();
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
  for (const Json::SchemaPart& part : Json::PartsOf(schema, view_->References())) {
    if (const Json::Value* properties = Json::FindObject(*part.schema, Keyword::kProperties)) {
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
  for (const Json::SchemaPart& part : Json::PartsOf(schema, view_->References())) {
    const Json::Value* properties = Json::FindObject(*part.schema, Keyword::kProperties);
    const Json::Value* others = Json::FindMember(*part.schema, Keyword::kAdditionalProperties);
    if (Json::FindProperty(*part.schema, name) != nullptr ||
        Json::FindObject(*part.schema, Keyword::kPatternProperties) != nullptr ||
        (others != nullptr && !others->IsFalse())) {
      return true;
    }
    // Conditions and dependencies declare members, but do not close the object to others.
    isClosed = isClosed || (part.applies != Json::Applies::UNDER_CONDITIONS &&
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
