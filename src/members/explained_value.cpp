#include "members/explained_value.h"

#include "json/equality.h"
#include "json/instance_ids.h"
#include "members/defaults.h"
#include "objects/access.h"
#include "objects/named_places.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace TarnConfigStore {
namespace {

bool IsThere(const Json::Value* value) {
  return value != nullptr && !value->IsNull();
}

// Values that lie on each other are put together rather than the one hiding the other.
bool AreMerged(const Json::Value& value, const MemberPlace& place) {
  return value.IsObject() || (value.IsArray() && !place.owner.Items().InstanceIdMember().empty());
}

const Json::Value* Data(const ObjectHandle& object) {
  return object ? &Internal::Access::Of(*object).GetRoot() : nullptr;
}

void FillFrom(const ObjectHandle& object, Json::SchemaPlace type, JsonDoc& into) {
  Json::Value& root = *into.GetJsonValuePtr();
  if (const Json::Value* data = Data(object)) {
    root.CopyFrom(*data, into.GetAllocator());
  } else {
    root.SetObject();
  }
  FillDefaults(root, type, into.GetAllocator());
}

}  // namespace

const Json::Value* ExplainedValue::Any() const {
  if (IsThere(shown)) {
    return shown;
  }
  if (IsThere(after)) {
    return after;
  }
  const auto held = std::find_if(parts.begin(), parts.end(),
                                 [](const OfPart& part) { return IsThere(part.value); });
  return held != parts.end() ? held->value : nullptr;
}

bool ExplainedValue::HoldsAny() const {
  return shown != nullptr || after != nullptr || !parts.empty();
}

bool ExplainedValue::IsObject() const {
  const Json::Value* any = Any();
  return any != nullptr && any->IsObject();
}

bool ExplainedValue::IsList() const {
  const Json::Value* any = Any();
  return any != nullptr && any->IsArray();
}

bool ExplainedValue::IsDefault() const {
  return IsThere(shown) && !IsThere(stored);
}

bool ExplainedValue::ChangesAtBoot() const {
  if (!IsThere(shown) || !IsThere(after)) {
    return IsThere(shown) != IsThere(after);
  }
  return !Json::Equal(*shown, *after);
}

std::vector<ExplainedValue::OfPart> ExplainedValue::PartsBelow() const {
  std::vector<OfPart> below = parts;
  bool isHidden = false;
  for (OfPart& part : below) {
    const bool isRead = part.role == PartRole::READ;
    part.role = isRead && isHidden ? PartRole::HIDDEN : part.role;
    isHidden = isHidden || (isRead && IsThere(part.value) && IsThere(shown) &&
                            part.value->GetType() != shown->GetType());
  }
  return below;
}

template <class Find>
ExplainedValue ExplainedValue::Below(const Find& find) const {
  const auto at = [&](const Json::Value* value) {
    return value == nullptr ? nullptr : find(*value);
  };
  ExplainedValue below{at(shown), at(stored), at(after), {}};
  for (const OfPart& part : PartsBelow()) {
    if (const Json::Value* value = at(part.value)) {
      below.parts.push_back({part.part, part.role, value});
    }
  }
  return below;
}

std::vector<std::string> ExplainedValue::Names() const {
  std::vector<std::string> names;
  std::unordered_set<std::string_view> known;
  const auto add = [&](const Json::Value* value) {
    if (value == nullptr || !value->IsObject()) {
      return;
    }
    for (const auto& member : value->GetObject()) {
      if (known.insert(Json::Text(member.name)).second) {
        names.emplace_back(Json::Text(member.name));
      }
    }
  };
  add(shown);
  for (const OfPart& part : parts) {
    add(part.value);
  }
  add(after);
  return names;
}

ExplainedValue ExplainedValue::Member(std::string_view name) const {
  return Below([&](const Json::Value& value) { return Json::FindMember(value, name); });
}

bool ExplainedValue::AreNamed(const MemberPlace& list) const {
  const std::string_view idMember = list.owner.Items().ShownIdMember();
  if (idMember.empty()) {
    return false;
  }
  bool any = false;
  const auto areNamed = [&](const Json::Value* value) {
    if (value == nullptr || !value->IsArray()) {
      return true;
    }
    std::unordered_set<std::string_view> known;
    return std::all_of(value->Begin(), value->End(), [&](const Json::Value& element) {
      const auto id = Json::InstanceIdOf(element, idMember);
      any = true;
      return id && known.insert(*id).second;
    });
  };
  return areNamed(shown) && areNamed(after) &&
         std::all_of(parts.begin(), parts.end(),
                     [&](const OfPart& part) { return areNamed(part.value); }) &&
         any;
}

std::vector<std::pair<std::string, ExplainedValue>> ExplainedValue::Elements(
    const MemberPlace& list) const {
  std::vector<std::pair<std::string, ExplainedValue>> elements;
  std::unordered_map<std::string_view, std::size_t> places;
  const std::string_view idMember = list.owner.Items().ShownIdMember();
  const auto add = [&](const Json::Value* value, const auto& put) {
    if (value == nullptr || !value->IsArray()) {
      return;
    }
    for (const Json::Value& element : value->GetArray()) {
      if (const auto id = Json::InstanceIdOf(element, idMember)) {
        const auto [place, isNew] = places.emplace(*id, elements.size());
        if (isNew) {
          elements.emplace_back(*id, ExplainedValue());
        }
        put(elements[place->second].second, element);
      }
    }
  };
  add(shown, [](ExplainedValue& at, const Json::Value& element) { at.shown = &element; });
  add(stored, [](ExplainedValue& at, const Json::Value& element) { at.stored = &element; });
  for (const OfPart& part : PartsBelow()) {
    add(part.value, [&](ExplainedValue& at, const Json::Value& element) {
      at.parts.push_back({part.part, part.role, &element});
    });
  }
  add(after, [](ExplainedValue& at, const Json::Value& element) { at.after = &element; });
  return elements;
}

ExplainedValue ExplainedValue::Element(const MemberPlace& list, std::string_view id) const {
  const std::string_view idMember = list.owner.Items().ShownIdMember();
  return Below([&](const Json::Value& value) { return FindInstance(value, idMember, id); });
}

std::vector<MemberPart> ExplainedValue::Held(const MemberPlace& place, bool isExpanded,
                                             bool reveal) const {
  std::vector<MemberPart> held;
  const Json::Value* hiding = nullptr;
  for (const OfPart& part : parts) {
    PartRole role = part.role;
    if (role == PartRole::READ) {
      const bool adds = hiding == nullptr || place.owner.IsInstanceId() ||
                        (hiding->GetType() == part.value->GetType() && AreMerged(*hiding, place));
      // A null says nothing beside a value.
      const bool isRead = adds && (IsThere(part.value) || !IsThere(stored));
      role = isRead ? PartRole::READ : PartRole::HIDDEN;
      hiding = hiding == nullptr && IsThere(part.value) ? part.value : hiding;
    }
    const Json::Value* any = Any();
    const bool isTold = isExpanded && any != nullptr && part.value->GetType() == any->GetType();
    if (!isTold) {
      held.push_back({part.part, role, ShownText(*part.value, place, reveal)});
    }
  }
  return held;
}

ExplainedData::ExplainedData(const ObjectState& state, Json::SchemaPlace type) : state_(state) {
  FillFrom(state.read, type, shown_);
  if (state.waits) {
    FillFrom(state.afterBoot, type, after_);
  }
}

ExplainedValue ExplainedData::Root() const {
  ExplainedValue root;
  root.shown = shown_.GetJsonValuePtr();
  root.stored = Data(state_.read);
  root.after = state_.waits ? after_.GetJsonValuePtr() : nullptr;
  for (const HeldPart& part : state_.parts) {
    root.parts.push_back({part.part, part.role, Data(part.object)});
  }
  return root;
}

}  // namespace TarnConfigStore
