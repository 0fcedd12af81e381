#include "tarnconfigstore/explain.h"

#include "platform/logger.h"

#include "json/equality.h"
#include "json/pointer.h"
#include "members/explained_value.h"
#include "members/member_places.h"
#include "members/object_state.h"
#include "objects/schema_lookup.h"
#include "store/trace.h"
#include "validation/guards.h"

#include <algorithm>
#include <functional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace TarnConfigStore {
namespace {

// Tells of a place in an object and all below it.
class ObjectWalk {
 public:
  ObjectWalk(bool waits, bool reveal, std::vector<ExplainedMember>& members)
      : waits_(waits), reveal_(reveal), members_(members) {}

  void Tell(const MemberPlace& place, const ExplainedValue& value, const std::string& pointer) {
    if (members_.size() == kMostMembers) {
      FailWithTooMany();
    }
    ExplainedMember member;
    static_cast<MemberDescription&>(member) = place.Describe(pointer, MemberToken::NAME, reveal_);
    member.isExpanded = IsExpanded(place, value);
    member.held = value.Held(place, member.isExpanded, reveal_);
    if (!member.isExpanded) {
      member.value = Text(value.shown, place);
      member.isDefault = value.IsDefault();
      member.changesAtBoot = waits_ && value.ChangesAtBoot();
      if (member.changesAtBoot) {
        member.afterBoot = Text(value.after, place);
      }
    }
    const bool below = member.isExpanded;
    members_.push_back(std::move(member));
    if (below) {
      TellBelow(place, value, pointer);
    }
  }

  void TellBelow(const MemberPlace& place, const ExplainedValue& value,
                 const std::string& pointer) {
    const bool isKnown = value.HoldsAny();
    if (!isKnown) {
      around_.push_back(place.Schema());
    }
    if (value.IsList()) {
      const MemberPlace element = place.Element(0);
      for (const auto& [id, below] : value.Elements(place)) {
        Tell(element, below, Json::PointerBelow(pointer, id));
      }
    } else {
      TellMembers(place, value, pointer);
    }
    if (!isKnown) {
      around_.pop_back();
    }
  }

 private:
  void TellMembers(const MemberPlace& place, const ExplainedValue& value,
                   const std::string& pointer) {
    std::set<std::string, std::less<>> told;
    place.ForEachMember([&](std::string_view name, const MemberPlace& member) {
      const ExplainedValue below = value.Member(name);
      told.emplace(name);
      // What only a branch of the schema names is told of where it is there.
      if (member.owner || below.HoldsAny() || IsAlways(member)) {
        Tell(member, below, Json::PointerBelow(pointer, name));
      }
    });
    for (const std::string& name : value.Names()) {
      if (told.insert(name).second) {
        Tell(place.Member(name), value.Member(name), Json::PointerBelow(pointer, name));
      }
    }
  }

  static bool IsAlways(const MemberPlace& member) {
    const std::vector<Json::SchemaPart> parts = member.values.Parts();
    return !parts.empty() && parts.front().applies == Json::Applies::ALWAYS;
  }

  // An absent object is told once, where its schema holds itself.
  bool IsExpanded(const MemberPlace& place, const ExplainedValue& value) const {
    if (place.isInSecret && !reveal_) {
      return false;
    }
    if (value.HoldsAny()) {
      return value.IsList() ? value.AreNamed(place) : value.IsObject() && HasMembers(place, value);
    }
    return place.values.Kinds().Holds(Json::ValueKinds::kObject) && HasMembers(place, value) &&
           around_.size() < Json::kMaxDepth &&
           std::find(around_.begin(), around_.end(), place.Schema()) == around_.end();
  }

  static bool HasMembers(const MemberPlace& place, const ExplainedValue& value) {
    bool has = !value.Names().empty();
    place.ForEachMember([&](std::string_view, const MemberPlace& member) {
      has = has || member.owner || IsAlways(member);
    });
    return has;
  }

  std::optional<std::string> Text(const Json::Value* value, const MemberPlace& place) const {
    return value == nullptr ? std::nullopt : std::optional(ShownText(*value, place, reveal_));
  }

  const bool waits_;
  const bool reveal_;
  std::vector<ExplainedMember>& members_;
  std::vector<const void*> around_;
};

// Where names lead; a secret is not gone into.
struct Spot {
  MemberPlace place;
  ExplainedValue value;
  std::string pointer;
  bool isThere = true;
};

Spot Find(Spot at, const std::vector<std::string>& names, bool reveal) {
  for (const std::string& name : names) {
    if (at.place.isInSecret && !reveal) {
      return at;
    }
    if (at.value.IsList() || (!at.value.HoldsAny() && at.place.owner.Items())) {
      at.value = at.value.Element(at.place, name);
      at.place = at.place.Element(0);
      at.isThere = at.value.HoldsAny();
    } else {
      at.value = at.value.Member(name);
      at.place = at.place.Member(name);
      at.isThere = at.place || at.value.HoldsAny();
    }
    if (!at.isThere) {
      return at;
    }
    Json::AppendToken(at.pointer, name);
  }
  return at;
}

void Describe(const ObjectState& state, ObjectExplanation& explanation) {
  explanation.isStored = state.row.has_value();
  if (state.row) {
    explanation.version = state.row->version;
    explanation.creationTime = state.row->creationTime;
    explanation.modifiedTime = state.modifiedTime;
    explanation.revision = state.row->revision;
    explanation.isConfirmed = state.row->confirmed;
  }
  explanation.changesAtBoot = state.waits;
  explanation.removedAtBoot = state.goes;
  explanation.misfits = state.misfits;
}

}  // namespace

ObjectExplanation ExplainObject(const ConfigStoreObjectId& csoId, const std::string& place,
                                bool reveal) {
  LogStoreCall(CSLogger::kTrace, "ExplainObject", csoId, EXTERNAL);
  const std::vector<std::string> names = RequirePlace(place);
  const SchemaHandle type = FindSchema(csoId);
  ValidateCsoId(csoId, type);
  const ObjectState state = ReadState(csoId, type);
  ObjectExplanation explanation;
  explanation.id = csoId;
  explanation.type = Summarize(*type);
  Describe(state, explanation);

  TypePlaces places(*type);
  const ExplainedData data(state, type->GetSchemaPlace());
  const Spot spot = Find({places.Root(), data.Root(), {}}, names, reveal);
  if (!spot.isThere) {
    return explanation;
  }
  ObjectWalk walk(state.waits, reveal, explanation.members);
  if (names.empty() && !(spot.place.isInSecret && !reveal)) {
    walk.TellBelow(spot.place, spot.value, spot.pointer);
  } else {
    walk.Tell(spot.place, spot.value, spot.pointer);
  }
  return explanation;
}

}  // namespace TarnConfigStore
