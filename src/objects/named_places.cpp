#include "objects/named_places.h"

#include "json/instance_ids.h"
#include "json/pointer.h"

#include <algorithm>
#include <cstddef>

namespace TarnConfigStore {
namespace {

// One step on the way: what a name leads to in a value, and the place that it is at.
const Json::Value* Step(const Json::Value& value, Json::SchemaPlace& place,
                        const std::string& name) {
  if (value.IsArray()) {
    const Json::Value* element = FindInstance(value, place.Items().ShownIdMember(), name);
    place = place.Items();
    return element;
  }
  place = place.Property(name);
  return Json::FindMember(value, name);
}

// All of this name: one that a null hid would be read from then on.
void EraseMember(Json::Value& object, const std::string& name) {
  while (object.EraseMember(Json::Reference(name))) {
  }
}

bool Erase(Json::Value& value, Json::SchemaPlace place, const PlaceNames& names, std::size_t at) {
  Json::SchemaPlace below = place;
  auto* found = const_cast<Json::Value*>(Step(value, below, names[at]));
  const bool isLast = at + 1 == names.size();
  if (found == nullptr || (!isLast && !Erase(*found, below, names, at + 1))) {
    return false;
  }
  if (value.IsArray()) {
    if (isLast) {
      value.Erase(found);
    }
  } else if (isLast || (Json::IsEmptyContainer(*found) && !place.CanRequire(names[at]) &&
                        !below.CanRequire(names[at + 1]) && !below.HoldsDefaults())) {
    EraseMember(value, names[at]);
  }
  return true;
}

Json::Value CopyFrom(const Json::Value& value, Json::SchemaPlace place, const PlaceNames& names,
                     std::size_t at, Json::Allocator& allocator) {
  if (at == names.size()) {
    return Json::Value(value, allocator);
  }
  const bool isElement = value.IsArray();
  const std::string_view idMember = isElement ? place.Items().ShownIdMember() : std::string_view();
  const Json::Value* found = Step(value, place, names[at]);
  Json::Value below =
      found == nullptr ? Json::Value() : CopyFrom(*found, place, names, at + 1, allocator);
  if (below.IsNull()) {
    return below;
  }
  Json::Value around(isElement ? rapidjson::kArrayType : rapidjson::kObjectType);
  if (!isElement) {
    around.AddMember(Json::Copy(names[at], allocator), below, allocator);
    return around;
  }
  if (!below.IsObject() || Json::FindMember(below, idMember) != nullptr) {
    around.PushBack(below, allocator);
    return around;
  }
  Json::Value element(rapidjson::kObjectType);
  element.AddMember(Json::Copy(idMember, allocator), Json::Copy(names[at], allocator), allocator);
  for (auto& member : below.GetObject()) {
    element.AddMember(member.name, member.value, allocator);
  }
  around.PushBack(element, allocator);
  return around;
}

}  // namespace

const Json::Value* FindInstance(const Json::Value& list, std::string_view idMember,
                                std::string_view id) {
  if (!list.IsArray()) {
    return nullptr;
  }
  const auto found = std::find_if(list.Begin(), list.End(), [&](const Json::Value& element) {
    return Json::InstanceIdOf(element, idMember) == id;
  });
  return found == list.End() ? nullptr : &*found;
}

const Json::Value* FindByIds(const Json::Value& value, Json::SchemaPlace place,
                             const PlaceNames& names) {
  const Json::Value* at = &value;
  for (std::size_t i = 0; at != nullptr && i < names.size(); ++i) {
    at = Step(*at, place, names[i]);
  }
  return at;
}

const Json::Value* FindByIds(const Json::Value& value, Json::SchemaPlace place,
                             const std::string& pointer) {
  const auto names = Json::ParsePointer(pointer);
  return names ? FindByIds(value, place, *names) : nullptr;
}

bool EraseByIds(Json::Value& value, Json::SchemaPlace place, const PlaceNames& names) {
  return !names.empty() && Erase(value, place, names, 0);
}

Json::Value CopyByIds(const Json::Value& value, Json::SchemaPlace place, const PlaceNames& names,
                      Json::Allocator& allocator) {
  return CopyFrom(value, place, names, 0, allocator);
}

}  // namespace TarnConfigStore
