// What the store asks beyond the words of JSON Schema, said in them.
#include "admin/plain_schema.h"
#include "json/schema_keywords.h"
#include "json/schema_parts.h"

#include <algorithm>
#include <array>

namespace TarnConfigStore {
namespace {

namespace Keyword = Json::Keyword;

using Json::Value;

constexpr std::array kBranches = {"anyOf", "oneOf"};

bool AdmitsOthers(const Value& schema) {
  const Value* given = Json::FindMember(schema, Keyword::kAdditionalProperties);
  return given != nullptr && !given->IsFalse();
}

}  // namespace

// What applies to a value beside its own schema, or may.
PlainSchema::Parts PlainSchema::PartsBeside(const Value& schema, const View& view) const {
  Parts parts = Json::PartsOf(schema, type_.References());
  parts.erase(parts.begin());
  for (const Value* beside : view.beside) {
    for (const Json::SchemaPart& part : Json::PartsOf(*beside, type_.References())) {
      parts.push_back({part.schema, Json::Applies::UNDER_CONDITIONS});
    }
  }
  return parts;
}

// Whether the schema does so by itself, or by each of the branches of which one has to apply.
bool PlainSchema::NamesMembers(const Value& schema) const {
  if (Json::FindObject(schema, Keyword::kProperties) != nullptr) {
    return true;
  }
  return std::any_of(kBranches.begin(), kBranches.end(), [&](const char* keyword) {
    const Value* branches = Json::FindMember(schema, keyword);
    return branches != nullptr &&
           std::all_of(branches->Begin(), branches->End(), [&](const Value& branch) {
             return Json::FindObject(*type_.References().Chain(branch).back(),
                                     Keyword::kProperties) != nullptr;
           });
  });
}

// Objects whose members are named are closed to others, unless something says that they are not; what
// parts of the schema declare counts, as it does for the store.
void PlainSchema::Close(const Value& schema, const View& view, Value& plain) {
  if (Json::FindMember(schema, Keyword::kAdditionalProperties) != nullptr) {
    return;
  }
  const Parts parts = PartsBeside(schema, view);
  bool closes = NamesMembers(schema);
  for (const Json::SchemaPart& part : parts) {
    if (AdmitsOthers(*part.schema)) {
      return;
    }
    closes = closes || (part.applies == Json::Applies::ALWAYS && NamesMembers(*part.schema));
  }
  if (!closes) {
    return;
  }
  for (const char* keyword : {Keyword::kProperties, Keyword::kPatternProperties}) {
    for (const Json::SchemaPart& part : parts) {
      const Value* declared = Json::FindObject(*part.schema, keyword);
      if (declared == nullptr) {
        continue;
      }
      if (!plain.HasMember(keyword)) {
        AddMember(plain, keyword, Value(rapidjson::kObjectType));
      }
      for (const auto& member : declared->GetObject()) {
        if (Json::FindMember(plain[keyword], Json::Text(member.name)) == nullptr) {
          AddMember(plain[keyword], Json::Text(member.name), Value(true));
        }
      }
    }
  }
  plain.AddMember("additionalProperties", false, allocator_);
}

Value PlainSchema::NamesOf(const Value& list, const Names& elsewhere) {
  Value names(rapidjson::kArrayType);
  for (const Value& name : list.GetArray()) {
    if (elsewhere.count(Json::Text(name)) == 0) {
      names.PushBack(Value(name, allocator_), allocator_);
    }
  }
  return names;
}

// The members that another one asks for; where it asks for a schema, that is added as all schemas are.
void PlainSchema::AddDependencies(const Value& schema, const Names& elsewhere, Value& plain) {
  const Value* dependencies = Json::FindObject(schema, Keyword::kDependencies);
  if (dependencies == nullptr) {
    return;
  }
  if (!plain.HasMember(Keyword::kDependencies)) {
    AddMember(plain, Keyword::kDependencies, Value(rapidjson::kObjectType));
  }
  for (const auto& [name, names] : dependencies->GetObject()) {
    if (names.IsArray()) {
      AddMember(plain[Keyword::kDependencies], Json::Text(name), NamesOf(names, elsewhere));
    }
  }
}

void PlainSchema::Require(const Value& schema, std::string_view id, const Names& elsewhere,
                          Value& plain) {
  const Value* required = Json::FindMember(schema, Keyword::kRequired);
  Value names = required != nullptr ? NamesOf(*required, elsewhere) : Value(rapidjson::kArrayType);
  const bool hasId = std::any_of(names.Begin(), names.End(),
                                 [&](const Value& name) { return Json::Text(name) == id; });
  if (!id.empty() && !hasId) {
    names.PushBack(Json::Copy(id, allocator_), allocator_);
  }
  plain.RemoveMember(Keyword::kRequired);
  if (!names.Empty()) {
    AddMember(plain, Keyword::kRequired, std::move(names));
  }
}

}  // namespace TarnConfigStore
