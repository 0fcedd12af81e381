#include "objects/generated_ids.h"

#include "json/equality.h"
#include "json/instance_ids.h"
#include "json/json_doc.h"
#include "objects/config_store_object_impl.h"
#include "objects/filter.h"

#include <unordered_set>

namespace TarnConfigStore {

void AdoptGeneratedIds(Json::Value& part, const Json::Value& whole, Json::SchemaPlace place,
                       Json::Allocator& allocator) {
  if (part.IsObject() && whole.IsObject()) {
    for (auto& member : part.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (const Json::Value* matched = Json::FindMember(whole, name)) {
        AdoptGeneratedIds(member.value, *matched, place.Property(name), allocator);
      }
    }
    return;
  }
  if (!part.IsArray() || !whole.IsArray()) {
    return;
  }
  const Json::SchemaPlace items = place.Items();
  std::unordered_set<const Json::Value*> taken;
  for (Json::Value& element : part.GetArray()) {
    const Json::Value* matched = nullptr;
    for (const Json::Value& candidate : whole.GetArray()) {
      if (IsSubset(element, candidate) && (matched == nullptr || taken.count(matched) != 0)) {
        matched = &candidate;
      }
    }
    if (matched == nullptr) {
      continue;
    }
    taken.insert(matched);
    AdoptGeneratedIds(element, *matched, items, allocator);
    const Json::Value* id = Json::FindMember(*matched, Json::kGeneratedInstanceId);
    if (items.GetsGeneratedId() && element.IsObject() && id != nullptr &&
        Json::FindMember(element, Json::kGeneratedInstanceId) == nullptr) {
      Json::AddMember(element, Json::Copy(Json::kGeneratedInstanceId, allocator),
                      Json::Value(*id, allocator), allocator);
    }
  }
}

void DropGeneratedIds(Json::Value& value) {
  if (!Json::HasGeneratedId(value)) {
    return;
  }
  const auto holdsNothingElse = [](const Json::Value& element) {
    return element.IsObject() && element.MemberCount() == 1 &&
           Json::Text(element.MemberBegin()->name) == Json::kGeneratedInstanceId;
  };
  if (value.IsObject()) {
    value.RemoveMember(Json::kGeneratedInstanceId);
    for (auto& member : value.GetObject()) {
      DropGeneratedIds(member.value);
    }
  } else if (value.IsArray()) {
    for (auto element = value.Begin(); element != value.End();) {
      if (holdsNothingElse(*element)) {
        element = value.Erase(element);
      } else {
        DropGeneratedIds(*element++);
      }
    }
  }
}

bool EqualButForGeneratedIds(const Json::Value& a, const Json::Value& b) {
  if (!Json::HasGeneratedId(a) && !Json::HasGeneratedId(b)) {
    return Json::Equal(a, b);
  }
  const auto cleared = [](const Json::Value& value, JsonDoc& copy) -> const Json::Value& {
    if (!Json::HasGeneratedId(value)) {
      return value;
    }
    Json::Value& root = *copy.GetJsonValuePtr();
    root.CopyFrom(value, copy.GetAllocator());
    Json::ClearGeneratedIds(root);
    return root;
  };
  JsonDoc copyOfA;
  JsonDoc copyOfB;
  return Json::Equal(cleared(a, copyOfA), cleared(b, copyOfB));
}

}  // namespace TarnConfigStore
