#include "schema/schema_walk.h"

#include "platform/generated_instance_id.h"

#include "schema/annotations.h"

#include <charconv>
#include <optional>
#include <set>
#include <utility>

namespace TarnSchemaStore {

namespace {

// Longer chains of references are circles.
// References may go round in circles through properties and items, and name one schema many times:
// each pair of a schema and a kind is looked at once.
class LeafKinds {
 public:
  explicit LeafKinds(const Json::Value& root) : root_(root) {}

  unsigned Of(const Json::Value& node, Kind around) {
    const Kind kind = KindOf(node, around);
    const Json::Value& schema = ResolveReference(root_, node);
    if (Json::IsTrue(node, Keyword::kInstanceId) || Json::IsTrue(schema, Keyword::kInstanceId) ||
        !seen_.emplace(&schema, kind).second) {
      return KIND_NONE;
    }
    if (const Json::Value* properties = PropertiesOf(schema)) {
      return OfMembers(schema, *properties, kind);
    }
    const Json::Value* items = Json::FindMember(schema, Keyword::kItems);
    if (items != nullptr && items->IsObject()) {
      return Of(*items, kind);
    }
    if (items != nullptr && items->IsArray()) {
      unsigned kinds = KIND_NONE;
      for (const Json::Value& item : items->GetArray()) {
        kinds |= Of(item, kind);
      }
      return kinds;
    }
    return kind;
  }

 private:
  unsigned OfMembers(const Json::Value& schema, const Json::Value& properties, Kind kind) {
    unsigned kinds = KIND_NONE;
    for (const auto& property : properties.GetObject()) {
      kinds |= Of(property.value, kind);
    }
    const Json::Value* additional = Json::FindMember(schema, Keyword::kAdditionalProperties);
    const bool open = additional != nullptr && !additional->IsFalse();
    if (open || Json::FindMember(schema, Keyword::kPatternProperties) != nullptr) {
      kinds |= kind;
    }
    return kinds;
  }

  const Json::Value& root_;
  std::set<std::pair<const Json::Value*, Kind>> seen_;
};

}  // namespace

const Json::Value& ResolveReference(const Json::Value& root, const Json::Value& node) {
  const Json::Value* found = Json::FollowReference(root, node);
  return found == nullptr ? node : *found;
}

const Json::Value* PropertiesOf(const Json::Value& objectSchema) {
  const Json::Value* properties = Json::FindMember(objectSchema, Keyword::kProperties);
  return properties != nullptr && properties->IsObject() ? properties : nullptr;
}

const Json::Value* ElementsOf(const Json::Value& arraySchema) {
  const Json::Value* items = Json::FindMember(arraySchema, Keyword::kItems);
  return items != nullptr && items->IsObject() ? items : nullptr;
}

bool DescribesObject(const Json::Value& schema) {
  const Json::Value* type = Json::FindMember(schema, Keyword::kType);
  if (type == nullptr) {
    return schema.IsObject() && ElementsOf(schema) == nullptr;
  }
  if (type->IsString()) {
    return Json::Text(*type) == "object";
  }
  if (type->IsArray()) {
    for (const Json::Value& one : type->GetArray()) {
      if (one.IsString() && Json::Text(one) == "object") {
        return true;
      }
    }
  }
  return false;
}

std::string_view InstanceIdMember(const Json::Value& root, const Json::Value& objectSchema) {
  if (const Json::Value* properties = PropertiesOf(objectSchema)) {
    for (const auto& property : properties->GetObject()) {
      if (Json::IsTrue(property.value, Keyword::kInstanceId) ||
          Json::IsTrue(ResolveReference(root, property.value), Keyword::kInstanceId)) {
        return Json::Text(property.name);
      }
    }
  }
  return {};
}

std::string_view ElementIdMember(const Json::Value& root, const Json::Value& arraySchema) {
  const Json::Value* items = ElementsOf(arraySchema);
  if (items == nullptr) {
    return {};
  }
  const Json::Value& element = ResolveReference(root, *items);
  if (Json::IsTrue(*items, Keyword::kGeneratedInstanceId) ||
      Json::IsTrue(element, Keyword::kGeneratedInstanceId)) {
    return kGeneratedInstanceIdMember;
  }
  return InstanceIdMember(root, element);
}

Kind KindOf(const Json::Value& node, Kind around) {
  if (Json::IsTrue(node, Keyword::kVital)) {
    return KIND_VITAL;
  }
  return Json::IsTrue(node, Keyword::kCached) ? KIND_CACHED : around;
}

unsigned KindsOfLeaves(const Json::Value& root, const Json::Value& node, Kind around) {
  return LeafKinds(root).Of(node, around);
}

std::string EscapePointerToken(std::string_view name) {
  std::string token;
  token.reserve(name.size());
  for (const char c : name) {
    if (c == '~') {
      token += "~0";
    } else if (c == '/') {
      token += "~1";
    } else {
      token += c;
    }
  }
  return token;
}

}  // namespace TarnSchemaStore
