#include "tarnconfigstore/taking_back.h"

#include "documents/object_plan.h"
#include "errors/raise.h"
#include "members/asked_places.h"
#include "members/changed_row.h"
#include "members/member_places.h"
#include "objects/access.h"
#include "objects/document.h"
#include "objects/merge.h"
#include "objects/named_places.h"
#include "persistence/row_map.h"
#include "persistence/row_objects.h"
#include "persistence/statements.h"
#include "validation/object_validation.h"

#include <memory>
#include <utility>
#include <vector>

namespace TarnConfigStore {
namespace {

using Text = std::optional<std::string>;

const char* ShippedColumn(ConfigPart part) {
  switch (part) {
    case ConfigPart::USER:
      return "Value";
    case ConfigPart::VITAL:
      return "VitalValue";
    case ConfigPart::CACHED:
      return "CachedValue";
    case ConfigPart::AUTOMATIC:
    case ConfigPart::PENDING:
      break;
  }
  return nullptr;  // nobody ships such a part
}

class Resetting {
 public:
  Resetting(ResetTarget target, const std::string& place, ConfigPart part, ResetResult& result)
      : target_(target), place_{place, RequirePlace(place)}, part_(part), result_(result) {}

  bool Change(ChangedRow& row, const DBStore::ConnectionHandle& connection) {
    Text wanted;
    if (target_ == ResetTarget::SHIPPED) {
      const RowMap shipped = ReadRowMap(connection, GET_DEFAULT_INSTANCE, row.id);
      if (shipped.Empty()) {
        result_.outcome = ResetOutcome::NOT_SHIPPED;
        return false;
      }
      const char* const column = ShippedColumn(part_);
      if (const auto text = column == nullptr ? std::nullopt : shipped.Find(column)) {
        wanted = *text;
      }
    }
    if (!place_.names.empty()) {
      wanted = WithPlaceOf(wanted, row);
    }
    const Text& held = row.Text(part_);
    // What is unconfirmed or pending beside it would be read some day.
    const bool isSettled = part_ != ConfigPart::USER || !place_.names.empty() ||
                           (row.row.confirmed && !row.row.pending);
    if (held.has_value() == wanted.has_value() && isSettled && HoldTheSame(held, wanted, false)) {
      return false;
    }
    row.Put(part_, std::move(wanted));
    row.replacesUser = part_ == ConfigPart::USER && place_.names.empty();
    Require(row);
    return true;
  }

 private:
  // The part as it is, but for the place that is to be as in another.
  Text WithPlaceOf(const Text& other, ChangedRow& row) const {
    const Json::SchemaPlace type = row.type->GetSchemaPlace();
    const Text& own = row.Text(part_);
    const ObjectHandle object = MakeObject(own.value_or("{}"), row.id, row.type);
    ConfigStoreObjectImpl& data = Internal::Access::Of(*object);
    if (!own) {
      data.SetInstanceIdFromCsoId();
    }
    const ObjectHandle source = MakeObject(other.value_or("{}"), row.id, row.type);
    const Json::Value& wanted = Internal::Access::Of(*source).GetRoot();
    std::vector<ErrorInfo> findings;
    CheckPlace(place_, type, data.GetRoot(), findings);
    CheckPlace(place_, type, wanted, findings);
    if (!findings.empty()) {
      RefusePlaces(std::move(findings));
    }
    if (const Json::Value* there = FindByIds(wanted, type, place_.names)) {
      if (Json::Value* held = FindByIds(data.GetRoot(), type, place_.names)) {
        Json::CopyInto(*held, *there, data.GetAllocator());
      } else {
        MergeValue(CopyByIds(wanted, type, place_.names, data.GetAllocator()), data.GetRoot(), type,
                   data.GetAllocator());
      }
    } else if (!EraseByIds(data.GetRoot(), type, place_.names)) {
      return own;
    }
    return type.HoldsNothingBesideId(data.GetRoot()) ? std::nullopt
                                                     : Text(data.GetSerializedData());
  }

  // What is left where a whole part goes was a part of its own before.
  void Require(const ChangedRow& row) const {
    if (place_.names.empty() && target_ == ResetTarget::DEFAULTS) {
      return;
    }
    if (const ObjectHandle left = row.Read()) {
      ValidateUpdated(row.type, left, row.written);
    }
  }

  const ResetTarget target_;
  const AskedPlace place_;
  const ConfigPart part_;
  ResetResult& result_;
};

ResetResult Reset(ConfigStore* store, const ConfigStoreObjectId& csoId, ResetTarget target,
                  const std::string& place, ConfigPart part) {
  ResetResult result;
  Resetting resetting(target, place, part, result);
  const ChangeOutcome outcome =
      ChangeRow(store, csoId, "ResetObject", part,
                [&](ChangedRow& row, const DBStore::ConnectionHandle& connection) {
                  return resetting.Change(row, connection);
                });
  if (outcome.fate != RowFate::LEFT) {
    result.outcome =
        outcome.fate == RowFate::REMOVED ? ResetOutcome::REMOVED : ResetOutcome::CHANGED;
  }
  result.dropsPending = outcome.dropsPending;
  return result;
}

}  // namespace

ResetResult ResetObject(const ConfigStoreObjectId& csoId, ResetTarget target,
                        const std::string& place, ConfigPart part) {
  return Reset(nullptr, csoId, target, place, part);
}

ResetResult ResetObject(ConfigStore& store, const ConfigStoreObjectId& csoId, ResetTarget target,
                        const std::string& place, ConfigPart part) {
  return Reset(&store, csoId, target, place, part);
}

}  // namespace TarnConfigStore
