#include "objects/three_way_merge.h"

#include "json/equality.h"
#include "json/instance_ids.h"
#include "json/pointer.h"
#include "objects/instance_order.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace TarnConfigStore {
namespace {

bool IsThere(const Json::Value* value) {
  return value != nullptr && !value->IsNull();
}

bool IsSame(const Json::Value* a, const Json::Value* b);

bool HoldsAllOf(const Json::Value& object, const Json::Value& other) {
  return std::all_of(other.MemberBegin(), other.MemberEnd(), [&object](const auto& member) {
    const std::string_view name = Json::Text(member.name);
    return name == Json::kGeneratedInstanceId ||
           IsSame(&member.value, Json::FindMember(object, name));
  });
}

// Whatever ids the store gave to elements. In a list, null is a value.
bool IsSame(const Json::Value* a, const Json::Value* b) {
  if (!IsThere(a) || !IsThere(b)) {
    return IsThere(a) == IsThere(b);
  }
  if (a->IsObject() && b->IsObject()) {
    return a == b || (HoldsAllOf(*a, *b) && HoldsAllOf(*b, *a));
  }
  if (a->IsArray() && b->IsArray()) {
    return std::equal(a->Begin(), a->End(), b->Begin(), b->End(),
                      [](const auto& one, const auto& other) { return IsSame(&one, &other); });
  }
  return Json::Equal(*a, *b);
}

// The members of one side, found by their names. A stored text may name one twice: the first counts.
class SideMembers {
 public:
  explicit SideMembers(const Json::Value* object) {
    if (IsThere(object)) {
      byName_.reserve(object->MemberCount());
      for (const auto& member : object->GetObject()) {
        byName_.emplace(Json::Text(member.name), &member.value);
      }
    }
  }
  const Json::Value* Find(std::string_view name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
  }

 private:
  std::unordered_map<std::string_view, const Json::Value*> byName_;
};

// The elements of one side, found by their ids.
class SideElements {
 public:
  SideElements(const Json::Value* list, const InstanceIds& ids) : ids_(ids) {
    for (rapidjson::SizeType i = 0; i < ids.size(); ++i) {
      byId_.emplace(ids[i], std::pair(&(*list)[i], i));
    }
  }
  const InstanceIds& Ids() const { return ids_; }
  const Json::Value* Find(std::string_view id) const {
    const auto found = byId_.find(id);
    return found == byId_.end() ? nullptr : found->second.first;
  }
  std::optional<rapidjson::SizeType> PlaceOf(std::string_view id) const {
    const auto found = byId_.find(id);
    return found == byId_.end() ? std::nullopt : std::optional(found->second.second);
  }

 private:
  const InstanceIds& ids_;
  std::unordered_map<std::string_view, std::pair<const Json::Value*, rapidjson::SizeType>> byId_;
};

class Merger {
 public:
  Merger(bool currentWins, Json::Allocator& allocator, const MeanwhileVisitor& visit)
      : currentWins_(currentWins), allocator_(allocator), visit_(visit) {}

  std::optional<Json::Value> Merge(const ThreeValues& at, Json::SchemaPlace place,
                                   const std::string& pointer) {
    if (IsSame(at.base, at.current)) {
      return Copy(at.staged);
    }
    if (IsThere(at.staged) && IsThere(at.current) && !place.IsSecret()) {
      if (at.staged->IsObject() && at.current->IsObject() &&
          (!IsThere(at.base) || at.base->IsObject())) {
        return MergeMembers(at, place, pointer);
      }
      if (at.staged->IsArray() && at.current->IsArray() &&
          (!IsThere(at.base) || at.base->IsArray())) {
        if (std::optional<Json::Value> list = MergeElements(at, place, pointer)) {
          return list;
        }
      }
    }
    const bool isUntouched = IsSame(at.base, at.staged);
    const bool conflicts = !isUntouched && !IsSame(at.staged, at.current);
    Tell(at, place, pointer, conflicts);
    return Copy(isUntouched || (conflicts && currentWins_) ? at.current : at.staged);
  }

 private:
  std::optional<Json::Value> Copy(const Json::Value* value) {
    return value == nullptr ? std::nullopt
                            : std::optional<Json::Value>(std::in_place, *value, allocator_);
  }

  void Tell(const ThreeValues& at, Json::SchemaPlace place, const std::string& pointer,
            bool conflicts) {
    if (visit_) {
      visit_({pointer, at, place, conflicts});
    }
  }

  Json::Value MergeMembers(const ThreeValues& at, Json::SchemaPlace place,
                           const std::string& pointer) {
    const SideMembers base(at.base);
    const SideMembers staged(at.staged);
    const SideMembers current(at.current);
    Json::Value merged(rapidjson::kObjectType);
    const auto add = [&](const Json::Value& name) {
      const std::string_view text = Json::Text(name);
      const ThreeValues member{base.Find(text), staged.Find(text), current.Find(text)};
      std::optional<Json::Value> value =
          place.IsIdMember(text)
              ? Copy(member.staged != nullptr ? member.staged : member.current)
              : Merge(member, place.Property(text), Json::PointerBelow(pointer, text));
      if (value) {
        merged.AddMember(Json::Value(name, allocator_), std::move(*value), allocator_);
      }
    };
    for (const auto& member : at.staged->GetObject()) {
      if (staged.Find(Json::Text(member.name)) == &member.value) {
        add(member.name);
      }
    }
    for (const auto& member : at.current->GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (staged.Find(name) == nullptr && current.Find(name) == &member.value) {
        add(member.name);
      }
    }
    if (IsThere(at.base)) {
      for (const auto& member : at.base->GetObject()) {  // gone on both sides
        const std::string_view name = Json::Text(member.name);
        if (staged.Find(name) == nullptr && current.Find(name) == nullptr) {
          add(member.name);
        }
      }
    }
    return merged;
  }

  // Nothing where the list has to be taken as one value.
  std::optional<Json::Value> MergeElements(const ThreeValues& at, Json::SchemaPlace place,
                                           const std::string& pointer) {
    const Json::SchemaPlace items = place.Items();
    const std::string_view idMember = items.InstanceIdMember();
    if (idMember.empty() || items.IsSecret()) {
      return std::nullopt;
    }
    const auto baseIds = IsThere(at.base) ? Json::InstanceIdsOf(*at.base, idMember)
                                          : std::optional<InstanceIds>(std::in_place);
    const auto stagedIds = Json::InstanceIdsOf(*at.staged, idMember);
    const auto currentIds = Json::InstanceIdsOf(*at.current, idMember);
    if (!baseIds || !stagedIds || !currentIds) {
      return std::nullopt;
    }
    const bool areGenerated = idMember == Json::kGeneratedInstanceId;
    if (areGenerated && (!ShareIds(*baseIds, *stagedIds) || !ShareIds(*baseIds, *currentIds))) {
      return std::nullopt;
    }
    const MergedOrder order =
        MergeOrders(IsThere(at.base) ? &*baseIds : nullptr, *stagedIds, *currentIds);
    if (order.conflicts) {
      return std::nullopt;
    }
    if (order.changedMeanwhile) {
      Tell(at, place, pointer, false);
    }
    const SideElements base(at.base, *baseIds);
    const SideElements staged(at.staged, *stagedIds);
    const SideElements current(at.current, *currentIds);
    Json::Value merged(rapidjson::kArrayType);
    const auto nameOf = [&](std::string_view id) {
      if (!areGenerated) {
        return std::string(id);
      }
      const auto inStaged = staged.PlaceOf(id);
      const auto inCurrent = current.PlaceOf(id);
      return std::to_string(inStaged ? *inStaged : inCurrent ? *inCurrent : *base.PlaceOf(id));
    };
    const auto add = [&](std::string_view id) {
      const ThreeValues element{base.Find(id), staged.Find(id), current.Find(id)};
      if (auto value = Merge(element, items, Json::PointerBelow(pointer, nameOf(id)))) {
        merged.PushBack(std::move(*value), allocator_);
      }
    };
    for (const std::string_view id : order.ids) {
      add(id);
    }
    for (const std::string_view id : base.Ids()) {  // gone on both sides
      if (staged.Find(id) == nullptr && current.Find(id) == nullptr) {
        add(id);
      }
    }
    return merged;
  }

  const bool currentWins_;
  Json::Allocator& allocator_;
  const MeanwhileVisitor& visit_;
};

}  // namespace

std::optional<Json::Value> MergeThreeWay(const ThreeValues& values, Json::SchemaPlace place,
                                         bool currentWins, Json::Allocator& allocator,
                                         const MeanwhileVisitor& visit) {
  return Merger(currentWins, allocator, visit).Merge(values, place, "");
}

}  // namespace TarnConfigStore
