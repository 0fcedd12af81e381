#include "validation/cleanup.h"

#include "platform/logger.h"

#include "json/type_schema_view.h"
#include "objects/access.h"

#include <algorithm>
#include <string>

namespace TarnConfigStore {
namespace {

bool IsContainer(const Json::Value& value) {
  return value.IsObject() || value.IsArray();
}

bool IsEmptyContent(const Json::Value& value) {
  return (value.IsObject() && value.ObjectEmpty()) || (value.IsArray() && value.Empty());
}

// Most objects hold nothing empty; looking for it asks nothing of the schema.
bool HoldsEmptyContent(const Json::Value& value) {
  if (value.IsObject()) {
    return std::any_of(value.MemberBegin(), value.MemberEnd(), [](const auto& member) {
      return IsEmptyContent(member.value) || HoldsEmptyContent(member.value);
    });
  }
  return value.IsArray() && std::any_of(value.Begin(), value.End(), [](const Json::Value& element) {
           return IsEmptyContent(element) || HoldsEmptyContent(element);
         });
}

void RemoveLoneInstanceId(Json::Value& object, Json::SchemaPlace schema) {
  if (object.MemberCount() != 1) {
    return;
  }
  const std::string_view idMember = schema.InstanceIdMember();
  if (Json::Text(object.MemberBegin()->name) == idMember) {
    CSLogger::Log(CSLogger::kOutcome, "Erasing instance id %s, nothing else is left",
                  std::string(idMember).c_str());
    object.RemoveAllMembers();
  }
}

// Answers whether anything was removed.
bool Clean(Json::Value& value, Json::SchemaPlace schema);

bool CleanMembers(Json::Value& object, Json::SchemaPlace schema) {
  bool removed = false;
  for (auto member = object.MemberBegin(); member != object.MemberEnd();) {
    const bool empties = IsContainer(member->value);
    const Json::SchemaPlace property =
        empties ? schema.Property(Json::Text(member->name)) : Json::SchemaPlace();
    if (!empties || property.OwnKind() != Json::Kind::USER) {
      ++member;
      continue;
    }
    removed = Clean(member->value, property) || removed;
    if (IsEmptyContent(member->value)) {
      CSLogger::Log(CSLogger::kOutcome, "Erasing empty object prop %s", member->name.GetString());
      member = object.EraseMember(member);
      removed = true;
    } else {
      ++member;
    }
  }
  return removed;
}

bool CleanElements(Json::Value& array, Json::SchemaPlace items) {
  bool removed = false;
  if (items.OwnKind() != Json::Kind::USER) {
    return removed;
  }
  for (auto element = array.Begin(); element != array.End();) {
    if (Clean(*element, items) && element->IsObject()) {
      RemoveLoneInstanceId(*element, items);
      removed = true;
    }
    if (IsEmptyContent(*element)) {
      CSLogger::Log(CSLogger::kOutcome, "Erasing empty array element %zu",
                    static_cast<std::size_t>(element - array.Begin()));
      element = array.Erase(element);
      removed = true;
    } else {
      ++element;
    }
  }
  return removed;
}

bool Clean(Json::Value& value, Json::SchemaPlace schema) {
  if (value.IsObject()) {
    return CleanMembers(value, schema);
  }
  return value.IsArray() && CleanElements(value, schema.Items());
}

}  // namespace

void CleanupObject(const ObjectHandle& object, const SchemaHandle& schema) {
  switch (schema->GetConfigType()) {
    case TarnSchemaStore::CONFIG_VITAL:
    case TarnSchemaStore::CONFIG_CACHED:
    case TarnSchemaStore::CONFIG_VITAL_AND_CACHED:
      return;
    default:
      break;
  }
  Json::Value& root = Internal::Access::Of(*object).GetRoot();
  if (root.IsObject()) {
    const Json::SchemaPlace node = schema->GetSchemaPlace();
    if (HoldsEmptyContent(root)) {
      Clean(root, node);
    }
    // One that names another instance is not all that the object says.
    const std::string& id = object->GetConfigStoreObjectId().instanceId;
    const Json::Value* given = Json::FindMember(root, node.InstanceIdMember());
    if (given != nullptr && given->IsString() && (id.empty() || Json::Text(*given) == id)) {
      RemoveLoneInstanceId(root, node);
    }
  }
}

}  // namespace TarnConfigStore
