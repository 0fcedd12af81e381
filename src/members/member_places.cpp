#include "members/member_places.h"

#include "errors/raise.h"
#include "json/pointer.h"
#include "json/schema_keywords.h"
#include "json/secrets.h"

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>
#include <vector>

namespace TarnConfigStore {
namespace {

// What narrows the values of a type's kinds. What holds for members and elements is told of them.
constexpr std::array kLimits = {"minimum",
                                "maximum",
                                "exclusiveMinimum",
                                "exclusiveMaximum",
                                "multipleOf",
                                "enum",
                                "const",
                                "pattern",
                                "format",
                                "minLength",
                                "maxLength",
                                "minItems",
                                "maxItems",
                                "uniqueItems",
                                "minProperties",
                                "maxProperties",
                                "contains",
                                "propertyNames",
                                "not"};

bool ListsValues(std::string_view keyword) {
  return keyword == "enum" || keyword == "const";
}

std::string Compact(const Json::Value& value) {
  std::string text;
  if (!Json::Serialize(value, text)) {
    ThrowFailure("A value cannot be written as JSON.");
  }
  return text;
}

std::string TextOf(const Json::Value* annotation) {
  return annotation != nullptr && annotation->IsString() ? std::string(Json::Text(*annotation))
                                                         : std::string();
}

// The kinds of value that a place takes; a schema may be "false", and take none.
std::string TypeWords(const Json::ValuePlace& place) {
  const std::vector<Json::SchemaPart> parts = place.Parts();
  const bool takesNone = std::any_of(parts.begin(), parts.end(), [](const Json::SchemaPart& part) {
    return part.applies == Json::Applies::ALWAYS && part.schema->IsFalse();
  });
  const Json::ValueKinds kinds = takesNone ? Json::ValueKinds(0) : place.KindsInBranches();
  return kinds == Json::ValueKinds(Json::ValueKinds::kAll) ? "any value" : kinds.Describe();
}

std::unordered_set<std::string_view> RequiredMembers(const Json::ValuePlace& place) {
  std::unordered_set<std::string_view> names;
  for (const Json::SchemaPart& part : place.Parts()) {
    const Json::Value* required = Json::FindMember(*part.schema, Json::Keyword::kRequired);
    if (part.applies != Json::Applies::ALWAYS || required == nullptr || !required->IsArray()) {
      continue;
    }
    for (const Json::Value& name : required->GetArray()) {
      if (name.IsString()) {
        names.insert(Json::Text(name));
      }
    }
  }
  return names;
}

void AddLimits(const MemberPlace& place, bool masks, std::vector<MemberLimit>& limits) {
  for (const Json::SchemaPart& part : place.values.Parts()) {
    if (part.isTested || !part.schema->IsObject()) {
      continue;
    }
    for (const auto& entry : part.schema->GetObject()) {
      const std::string_view keyword = Json::Text(entry.name);
      if (std::find(kLimits.begin(), kLimits.end(), keyword) == kLimits.end() ||
          entry.value.IsFalse()) {
        continue;
      }
      MemberLimit limit{
          std::string(keyword),
          masks && ListsValues(keyword) ? Json::Quoted(Json::kMask) : Compact(entry.value),
          part.applies == Json::Applies::ALWAYS};
      const bool isKnown = std::any_of(limits.begin(), limits.end(), [&](const MemberLimit& other) {
        return other.keyword == limit.keyword && other.value == limit.value &&
               other.always >= limit.always;
      });
      if (!isKnown) {
        limits.push_back(std::move(limit));
      }
    }
  }
}

std::vector<ConfigPart> PartsOf(unsigned kinds) {
  std::vector<ConfigPart> parts;
  for (const auto& [kind, part] : {std::pair(Json::Kind::USER, ConfigPart::USER),
                                   std::pair(Json::Kind::VITAL, ConfigPart::VITAL),
                                   std::pair(Json::Kind::CACHED, ConfigPart::CACHED)}) {
    if ((kinds & static_cast<unsigned>(kind)) != 0) {
      parts.push_back(part);
    }
  }
  return parts;
}

}  // namespace

void FailWithTooMany() {
  ThrowFailure("There are more than " + std::to_string(kMostMembers) +
               " members to tell of: name one of them.");
}

MemberPlace MemberPlace::Member(std::string_view name) const {
  const Json::SchemaPlace property = owner.Property(name);
  return {property, values.Member(name), RequiredMembers(values).count(name) != 0,
          isInSecret || property.IsSecret()};
}

MemberPlace MemberPlace::Element(std::size_t index) const {
  const Json::SchemaPlace items = owner.Items();
  return {items, values.Element(index), false, isInSecret || items.IsSecret()};
}

MemberPlace MemberPlace::Unnamed(Json::ValuePlace others) const {
  return {owner.Unnamed(), others, false, isInSecret};
}

void MemberPlace::ForEachMember(
    const std::function<void(std::string_view, const MemberPlace&)>& visit) const {
  const std::unordered_set<std::string_view> required = RequiredMembers(values);
  const auto tell = [&](std::string_view name, Json::SchemaPlace property, Json::ValuePlace value) {
    visit(name, {property, value, required.count(name) != 0, isInSecret || property.IsSecret()});
  };
  owner.ForEachProperty([&](std::string_view name, Json::SchemaPlace property) {
    tell(name, property, values.Member(name));
  });
  values.ForEachMember([&](std::string_view name, Json::ValuePlace value) {
    if (const Json::SchemaPlace property = owner.Property(name); !property) {
      tell(name, property, value);
    }
  });
}

const void* MemberPlace::Schema() const {
  const std::vector<Json::SchemaPart> parts = values.Parts();
  return parts.empty() ? static_cast<const void*>(owner.Schema()) : parts.front().schema;
}

MemberDescription MemberPlace::Describe(std::string pointer, MemberToken token, bool reveal) const {
  const bool masks = isInSecret && !reveal;
  MemberDescription described;
  described.pointer = std::move(pointer);
  described.token = token;
  described.type = TypeWords(values);
  described.title = TextOf(values.FindAnnotation("title"));
  described.description = TextOf(values.FindAnnotation("description"));
  if (const Json::Value* value = owner.Default()) {
    described.defaultValue = ShownText(*value, *this, reveal);
  }
  AddLimits(*this, masks, described.limits);
  described.parts = PartsOf(owner.Kinds());
  described.isRequired = isRequired;
  described.isSecret = isInSecret;
  const Json::Value* readOnly = values.FindAnnotation("readOnly");
  described.isReadOnly = readOnly != nullptr && readOnly->IsTrue();
  described.isInstanceId = owner.IsInstanceId();
  return described;
}

TypePlaces::TypePlaces(const TarnSchemaStore::SchemaObject& type)
    : root_(type.GetSchemaPlace()),
      references_(type.GetSchemaDocument()),
      values_(references_, type.GetSchemaDocument()) {}

MemberPlace TypePlaces::Root() {
  return {root_, values_.Root(), false, root_.IsSecret()};
}

TypeSummary Summarize(const TarnSchemaStore::SchemaObject& type) {
  const Json::Value& schema = type.GetSchemaDocument();
  return {type.GetComponent(),
          type.GetGroup(),
          type.GetKey(),
          type.GetVersion(),
          TextOf(Json::FindMember(schema, "title")),
          TextOf(Json::FindMember(schema, "description")),
          type.IsNonSingleton(),
          type.IsRebootRequired(),
          type.IsBootAccessible()};
}

std::string ShownText(const Json::Value& value, const MemberPlace& place, bool reveal) {
  if (reveal || (!place.isInSecret && !place.owner.HoldsSecrets())) {
    return Compact(value);
  }
  if (place.isInSecret) {
    return value.IsNull() ? "null" : Json::Quoted(Json::kMask);
  }
  return Json::TextWithMasks(value, place.owner);
}

std::vector<std::string> RequirePlace(const std::string& pointer) {
  auto names = Json::ParsePointer(pointer);
  if (!names) {
    ThrowArgument("\"" + pointer + "\" is no JSON Pointer.");
  }
  return std::move(*names);
}

}  // namespace TarnConfigStore
