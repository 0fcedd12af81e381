#include "store/removals.h"

#include "json/pointer.h"
#include "json/secrets.h"

#include <algorithm>

namespace TarnConfigStore {
namespace {

Json::Value* FindElement(Json::Value& array, std::string_view idMember, std::string_view id) {
  if (array.IsArray()) {
    for (Json::Value& element : array.GetArray()) {
      if (Json::InstanceIdOf(element, idMember) == id) {
        return &element;
      }
    }
  }
  return nullptr;
}

bool Erase(Json::Value& object, std::string_view name) {
  const auto member = object.FindMember(Json::Reference(name));
  if (member == object.MemberEnd()) {
    return false;
  }
  object.EraseMember(member);
  return true;
}

}  // namespace

Removals::Removals(const Json::Value& given, Json::SchemaPlace type) {
  std::vector<Step> way;
  std::string pointer;
  if (given.IsObject()) {
    Collect(given, type, way, pointer);
  }
  for (Removal& removal : removals_) {
    removal.pointer = Json::ShownPointer(removal.pointer, type);
  }
}

void Removals::Collect(const Json::Value& object, Json::SchemaPlace place, std::vector<Step>& way,
                       std::string& pointer) {
  for (const auto& member : object.GetObject()) {
    const Json::Value& value = member.value;
    if (!value.IsNull() && !Json::IsContainer(value)) {
      continue;
    }
    const std::string_view name = Json::Text(member.name);
    if (value.IsNull() && place.IsIdMember(name)) {
      continue;  // counts as not given
    }
    const Json::SchemaPlace property = place.Property(name);
    const std::size_t above = pointer.size();
    Json::AppendToken(pointer, name);
    if (value.IsNull() || Json::IsEmptyContainer(value)) {
      removals_.push_back({way, name, value.IsNull(), property.Kinds(), pointer});
    } else if (value.IsObject()) {
      way.push_back({name, {}, {}});
      Collect(value, property, way, pointer);
      way.pop_back();
    } else {
      CollectElements(value, name, property.Items(), way, pointer);
    }
    pointer.resize(above);
  }
}

void Removals::CollectElements(const Json::Value& array, std::string_view member,
                               Json::SchemaPlace items, std::vector<Step>& way,
                               std::string& pointer) {
  const std::string_view idMember = items.InstanceIdMember();
  if (idMember.empty()) {
    return;
  }
  const std::size_t above = pointer.size();
  for (rapidjson::SizeType i = 0; i < array.Size(); ++i) {
    if (const auto id = Json::InstanceIdOf(array[i], idMember)) {
      Json::AppendToken(pointer, std::to_string(i));
      way.push_back({member, idMember, *id});
      Collect(array[i], items, way, pointer);
      way.pop_back();
      pointer.resize(above);
    }
  }
}

// The object that so many steps of a way lead to, or null.
Json::Value* Removals::Follow(const std::vector<Step>& way, std::size_t steps, Json::Value& root) {
  Json::Value* at = &root;
  for (std::size_t i = 0; i < steps; ++i) {
    const Step& step = way[i];
    at = Json::FindMember(*at, step.member);
    if (at != nullptr && !step.idMember.empty()) {
      at = FindElement(*at, step.idMember, step.id);
    }
    if (at == nullptr) {
      return nullptr;
    }
  }
  return at->IsObject() ? at : nullptr;
}

Json::Value* Removals::Holder(const Removal& removal, Json::Value& root) {
  return Follow(removal.way, removal.way.size(), root);
}

void Removals::EraseEmptied(const std::vector<Step>& way, Json::Value& root) {
  for (std::size_t steps = way.size(); steps > 0 && way[steps - 1].idMember.empty(); --steps) {
    if (!Follow(way, steps, root)->ObjectEmpty()) {
      return;
    }
    Erase(*Follow(way, steps - 1, root), way[steps - 1].member);
  }
}

bool Removals::HasNulls() const {
  return std::any_of(removals_.begin(), removals_.end(),
                     [](const Removal& removal) { return removal.isNull; });
}

unsigned Removals::Kinds() const {
  unsigned kinds = 0;
  for (const Removal& removal : removals_) {
    kinds |= removal.kinds;
  }
  return kinds;
}

void Removals::TakeNullsFrom(Json::Value& data) const {
  for (const Removal& removal : removals_) {
    if (Json::Value* holder = removal.isNull ? Holder(removal, data) : nullptr) {
      Erase(*holder, removal.member);
      EraseEmptied(removal.way, data);
    }
  }
}

bool Removals::TakeFrom(Json::Value& part) const {
  bool taken = false;
  for (const Removal& removal : removals_) {
    if (Json::Value* holder = Holder(removal, part)) {
      taken = Erase(*holder, removal.member) || taken;
    }
  }
  return taken;
}

void Removals::CheckGone(const Json::Value& result, const char* holder,
                         std::vector<ErrorInfo>& findings) const {
  for (const Removal& removal : removals_) {
    // Holder looks only.
    const Json::Value* object = Holder(removal, const_cast<Json::Value&>(result));
    const Json::Value* left =
        object == nullptr ? nullptr : Json::FindMember(*object, removal.member);
    if (left != nullptr && !left->IsNull() && !(Json::IsEmptyContainer(*left) && !removal.isNull)) {
      findings.push_back({removal.pointer, std::string("cannot be taken away: ") + holder +
                                               " configuration still holds it"});
    }
  }
}

}  // namespace TarnConfigStore
