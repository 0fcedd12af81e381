#include "tarnconfigstore/taking_back.h"

#include "members/asked_places.h"
#include "members/changed_row.h"
#include "members/member_places.h"
#include "objects/access.h"
#include "objects/named_places.h"
#include "persistence/row_objects.h"
#include "validation/object_validation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr std::array kParts = {ConfigPart::USER, ConfigPart::AUTOMATIC, ConfigPart::VITAL,
                               ConfigPart::CACHED};

// What users take back: whatever an update of theirs writes.
bool IsMeant(ConfigPart asked, std::optional<ConfigPart> part) {
  return part ? asked == *part : asked != ConfigPart::AUTOMATIC;
}

// The places that are to be unset, and what has become of them.
class Unsetting {
 public:
  Unsetting(const std::vector<std::string>& places, std::optional<ConfigPart> part,
            UnsetResult& result)
      : part_(part), result_(result) {
    for (const std::string& place : places) {
      places_.push_back({place, RequirePlace(place)});
      result_.members.push_back({place, {}, {}});
    }
  }

  /// Answers whether the row is to be written.
  bool Change(ChangedRow& row) {
    Look(row);
    const bool areSet =
        std::all_of(result_.members.begin(), result_.members.end(),
                    [](const UnsetMember& member) { return !member.taken.empty(); });
    if (!areSet || places_.empty()) {
      return false;
    }
    const Json::SchemaPlace type = row.type->GetSchemaPlace();
    for (const ConfigPart part : kParts) {
      if (IsMeant(part, part_)) {
        ChangePart(row, part, [&](ConfigStoreObjectImpl& data) {
          bool any = false;
          for (const AskedPlace& place : places_) {
            any = EraseByIds(data.GetRoot(), type, place.names) || any;
          }
          return any;
        });
      }
    }
    Require(row);
    result_.isWritten = true;
    return true;
  }

 private:
  // Finds what holds each place.
  void Look(ChangedRow& row) {
    const Json::SchemaPlace type = row.type->GetSchemaPlace();
    const Json::Value nothing(rapidjson::kObjectType);
    std::vector<ErrorInfo> findings;
    for (const ConfigPart part : kParts) {
      const std::optional<std::string>& text = row.Text(part);
      const ObjectHandle object = text ? MakeObject(*text, row.id, row.type) : nullptr;
      const Json::Value& data = object ? Internal::Access::Of(*object).GetRoot() : nothing;
      for (std::size_t i = 0; i < places_.size(); ++i) {
        CheckPlace(places_[i], type, data, findings);
        if (FindByIds(data, type, places_[i].names) != nullptr) {
          UnsetMember& member = result_.members[i];
          (IsMeant(part, part_) ? member.taken : member.left).push_back(part);
        }
      }
    }
    if (!findings.empty()) {
      RefusePlaces(std::move(findings));
    }
  }

  static void Require(const ChangedRow& row) {
    const ObjectHandle left = row.Read();
    if (!left ||
        row.type->GetSchemaPlace().HoldsNothingBesideId(Internal::Access::Of(*left).GetRoot())) {
      RefusePlaces({{"/", "nothing would be left of the object; delete it instead"}});
    }
    ValidateUpdated(row.type, left, row.written);
  }

  const std::optional<ConfigPart> part_;
  UnsetResult& result_;
  std::vector<AskedPlace> places_;
};

UnsetResult Unset(ConfigStore* store, const ConfigStoreObjectId& csoId,
                  const std::vector<std::string>& places, std::optional<ConfigPart> part) {
  UnsetResult result;
  Unsetting unsetting(places, part, result);
  const ChangeOutcome outcome =
      ChangeRow(store, csoId, "UnsetMembers", part,
                [&](ChangedRow& row, const auto& /*connection*/) { return unsetting.Change(row); });
  result.dropsPending = outcome.dropsPending;
  return result;
}

}  // namespace

UnsetResult UnsetMembers(const ConfigStoreObjectId& csoId, const std::vector<std::string>& places,
                         std::optional<ConfigPart> part) {
  return Unset(nullptr, csoId, places, part);
}

UnsetResult UnsetMembers(ConfigStore& store, const ConfigStoreObjectId& csoId,
                         const std::vector<std::string>& places, std::optional<ConfigPart> part) {
  return Unset(&store, csoId, places, part);
}

}  // namespace TarnConfigStore
