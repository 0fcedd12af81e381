#include "store/staged_merge.h"

#include "json/instance_ids.h"
#include "json/pointer.h"
#include "json/secrets.h"
#include "objects/access.h"
#include "objects/generated_ids.h"
#include "persistence/staged_base_row.h"
#include "persistence/statements.h"
#include "store/staged_content.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr std::array<std::string_view, 5> kValuesOfRow = {"UserValue", "DesiredValue", "VitalValue",
                                                          "CachedValue", "AutoConfValue"};

bool HoldsSameTexts(const RowMap& a, const RowMap& b) {
  return std::all_of(kValuesOfRow.begin(), kValuesOfRow.end(),
                     [&](std::string_view column) { return a.Find(column) == b.Find(column); });
}

bool HoldsValues(const RowMap& row) {
  return std::any_of(kValuesOfRow.begin(), kValuesOfRow.end(),
                     [&row](std::string_view column) { return row.Find(column).has_value(); });
}

const Json::Value* RootOrNull(const ObjectHandle& object) {
  return object ? &Internal::Access::Of(*object).GetRoot() : nullptr;
}

// A deletion, held against the row that it is about and, where it is about all of a type, the others.
class Deletion {
 public:
  Deletion(const ConfigStoreObjectId& id, const SchemaHandle& type,
           const DBStore::ConnectionHandle& connection, const MeanwhileVisitor& visit)
      : id_(id), type_(type), connection_(connection), visit_(visit) {}

  /// Answers whether there is a conflict.
  bool Check(NextBootAction action, const RowMap& base) {
    CheckRow(base, ReadRowMap(connection_, READ_TABLE_CONFIG, id_), id_, "");
    if (action == NextBootAction::DELETE) {
      ConfigStoreObjectId instance = id_;
      ForEachRow(connection_, GET_INSTANCES.Text(), id_, [&](const RowMap& row) {
        instance.instanceId = row.Text("Identifier");
        if (instance.instanceId != id_.instanceId) {
          CheckRow({}, row, instance, Json::PointerBelow("", instance.instanceId));
        }
      });
    }
    return conflicts_;
  }

 private:
  void CheckRow(const RowMap& base, const RowMap& current, const ConfigStoreObjectId& id,
                const std::string& pointer) {
    if (!HoldsValues(current) || HoldsSameTexts(base, current)) {
      return;
    }
    if (type_) {
      // Automatic configuration goes with the row, be it read or hidden.
      CheckValues(NewestContent(base, id, type_), NewestContent(current, id, type_), pointer);
      CheckValues(MakeObjectFromRow(base, "AutoConfValue", id, type_),
                  MakeObjectFromRow(current, "AutoConfValue", id, type_), pointer);
      return;
    }
    // Nobody knows what of it is secret.
    const Json::Value mask = Json::Reference(Json::kMask);
    Tell(pointer, HoldsValues(base) ? &mask : nullptr, &mask, {});
  }

  // What somebody took away meanwhile is gone either way.
  void CheckValues(const ObjectHandle& before, const ObjectHandle& now,
                   const std::string& pointer) {
    if (now && (!before || !EqualButForGeneratedIds(*RootOrNull(before), *RootOrNull(now)))) {
      Tell(pointer, RootOrNull(before), RootOrNull(now), type_->GetSchemaPlace());
    }
  }

  void Tell(const std::string& pointer, const Json::Value* before, const Json::Value* now,
            Json::SchemaPlace place) {
    conflicts_ = true;
    if (visit_) {
      visit_({pointer, {before, nullptr, now}, place, true});
    }
  }

  const ConfigStoreObjectId& id_;
  const SchemaHandle& type_;
  const DBStore::ConnectionHandle& connection_;
  const MeanwhileVisitor& visit_;
  bool conflicts_ = false;
};

void MergeContent(const ConfigStoreObjectId& id, const SchemaHandle& type,
                  const ObjectHandle& content, const RowMap& baseRow, const RowMap& currentRow,
                  bool currentWins, const MeanwhileVisitor& visit, MergedChange& merged) {
  const ObjectHandle base = NewestContent(baseRow, id, type);
  const ObjectHandle current = NewestContent(currentRow, id, type);
  const Json::SchemaPlace place = type->GetSchemaPlace();
  const ThreeValues values{RootOrNull(base), RootOrNull(content), RootOrNull(current)};
  if (!base && !current) {
    return;
  }
  if (!current) {  // whoever deleted all of it did not mean to leave what was staged
    if (visit) {
      visit({"", values, place, true});
    }
    merged.drops = currentWins;
    return;
  }
  auto data = JsonDoc::Make();
  bool changed = false;
  std::optional<Json::Value> result = MergeThreeWay(
      values, place, currentWins, data->GetAllocator(), [&](const ChangedMeanwhile& found) {
        changed = true;
        if (visit) {
          visit(found);
        }
      });
  if (changed && result) {
    *data->GetJsonValuePtr() = std::move(*result);
    merged.content = MakeObject(data, id, type);
  }
}

std::optional<std::string> TextOf(const Json::Value* value, Json::SchemaPlace place, bool reveal) {
  if (value == nullptr || value->IsNull()) {
    return std::nullopt;
  }
  if (!reveal) {
    return Json::TextWithMasks(*value, place);
  }
  Json::Document shown;
  shown.CopyFrom(*value, shown.GetAllocator());
  Json::ClearGeneratedIds(shown);
  std::string text;
  Json::Serialize(shown, text);
  return text;
}

}  // namespace

MergedChange MergeStagedChange(const ConfigStoreObjectId& id, NextBootAction action,
                               const SchemaHandle& type, const ObjectHandle& content,
                               bool currentWins, const DBStore::ConnectionHandle& connection,
                               const MeanwhileVisitor& visit) {
  MergedChange merged;
  const std::optional<RowMap> base = ReadStagedBaseRow(id, connection);
  if (!base) {
    return merged;
  }
  merged.hasBase = true;
  try {
    if (action == NextBootAction::SET) {
      const RowMap current = ReadRowMap(connection, READ_TABLE_CONFIG, id);
      if (!HoldsSameTexts(*base, current)) {
        MergeContent(id, type, content, *base, current, currentWins, visit, merged);
      }
    } else {
      merged.drops = Deletion(id, type, connection, visit).Check(action, *base) && currentWins;
    }
  } catch (const InvalidArgumentException& notJson) {
    merged.findings.push_back(
        {"/", std::string("What it is to be merged with cannot be read: ") + notJson.what()});
  }
  return merged;
}

ChangeConflict DescribeMeanwhile(const ChangedMeanwhile& changed, bool reveal) {
  return {changed.pointer, TextOf(changed.values.base, changed.place, reveal),
          TextOf(changed.values.staged, changed.place, reveal),
          TextOf(changed.values.current, changed.place, reveal)};
}

}  // namespace TarnConfigStore
