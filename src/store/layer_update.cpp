#include "store/layer_update.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/merge.h"
#include "validation/object_validation.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TarnConfigStore {
namespace {

unsigned PartsOf(const ColumnValues& values) {
  const auto part = [](bool given, Json::Kind kind) {
    return given ? static_cast<unsigned>(kind) : 0U;
  };
  return part(values.user || values.automatic, Json::Kind::USER) |
         part(values.vital.has_value(), Json::Kind::VITAL) |
         part(values.cached.has_value(), Json::Kind::CACHED);
}

// One value of a row, with a change laid over it.
class Layer {
 public:
  Layer(const RowMap& row, std::string_view column, const ConfigStoreObjectId& id,
        const SchemaHandle& schema)
      : id_(id), schema_(schema), object_(MakeObjectFromRow(row, column, id, schema)) {
    if (const auto text = row.Find(column)) {
      text_ = *text;
    }
  }

  /// Answers whether there was anything to take.
  bool Take(const Removals& removals) {
    if (!object_ || !removals.TakeFrom(Internal::Access::Of(*object_).GetRoot())) {
      return false;
    }
    if (schema_->GetSchemaPlace().HoldsNothingBesideId(Internal::Access::Of(*object_).GetRoot())) {
      object_ = nullptr;
      text_.reset();
    } else {
      text_ = Internal::Access::Of(*object_).GetSerializedData();
    }
    return true;
  }

  void LayOver(const std::optional<std::string>& change) {
    if (!change) {
      return;
    }
    ObjectHandle over = MakeObject(*change, id_, schema_);
    if (!object_) {
      object_ = std::move(over);
      text_ = *change;
    } else {
      object_ = UpdateConfigInternal(over, object_, schema_->GetSchemaPlace());
      text_ = Internal::Access::Of(*object_).GetSerializedData();
    }
  }

  const ObjectHandle& Object() const { return object_; }
  std::optional<std::string>& Text() { return text_; }

 private:
  const ConfigStoreObjectId& id_;
  const SchemaHandle& schema_;
  ObjectHandle object_;
  std::optional<std::string> text_;
};

[[noreturn]] void Refuse(std::vector<ErrorInfo> findings) {
  for (const ErrorInfo& finding : findings) {
    CSLogger::LogErrCode(CSLogger::kFailure, CS_VALIDATION_FINDING, finding.field.c_str(),
                         finding.error.c_str());
  }
  ThrowException<ValidationException>(CS_UPDATE_INVALID, findings);
}

void CheckRemovals(const Removals& removals, const ObjectHandle& result, const char* holder,
                   Json::SchemaPlace type) {
  if (removals.Empty()) {
    return;
  }
  constexpr const char* kNothingLeft = "nothing would be left of the object; delete it instead";
  std::vector<ErrorInfo> findings;
  if (!result) {
    Refuse({{"/", kNothingLeft}});
  }
  const Json::Value& data = Internal::Access::Of(*result).GetRoot();
  removals.CheckGone(data, holder, findings);
  if (type.HoldsNothingBesideId(data)) {
    findings.push_back({"/", kNothingLeft});
  }
  if (!findings.empty()) {
    Refuse(findings);
  }
}

}  // namespace

void ValidateChange(const ObjectHandle& object, const Removals& removals,
                    const SchemaHandle& schema) {
  if (removals.HasNulls()) {
    // A null that stands for no member at all would be taken out with the others.
    ValidateNames(schema, object);
    removals.TakeNullsFrom(Internal::Access::Of(*object).GetRoot());
  }
  ValidateUpdate(schema, object);
}

LayerUpdate::LayerUpdate(const ObjectHandle& object, const Removals& removals,
                         const SchemaHandle& schema, const USERDATA_CONTEXT& context)
    : id_(object->GetConfigStoreObjectId()),
      removals_(removals),
      schema_(schema),
      byUser_(context == EXTERNAL) {
  GiveGeneratedIds(*object, *schema);
  // What only takes away has nothing to lay over any part.
  if (removals.Empty() ||
      !schema->GetSchemaPlace().HoldsNothingBesideId(Internal::Access::Of(*object).GetRoot())) {
    changes_ = DivideObject(*object, *schema, context).values;
  }
}

ColumnValues LayerUpdate::Over(const RowMap& row, bool duringUpgrade) const {
  Layer automatic(row, "AutoConfValue", id_, schema_);
  Layer cached(row, "CachedValue", id_, schema_);
  Layer vital(row, "VitalValue", id_, schema_);
  // A user's change is laid over what a reader of this moment sees as the user's.
  const bool pending = duringUpgrade && row.Find("DesiredValue");
  Layer user(row, pending ? "DesiredValue" : "UserValue", id_, schema_);
  unsigned written = PartsOf(changes_);
  if (!removals_.Empty()) {
    for (const auto& [layer, kind] :
         {std::pair(byUser_ ? &user : &automatic, Json::Kind::USER),
          std::pair(&vital, Json::Kind::VITAL), std::pair(&cached, Json::Kind::CACHED)}) {
      written |= layer->Take(removals_) ? static_cast<unsigned>(kind) : 0U;
    }
  }
  automatic.LayOver(changes_.automatic);
  cached.LayOver(changes_.cached);
  vital.LayOver(changes_.vital);
  user.LayOver(changes_.user);

  const ObjectHandle result = MergeConfig(automatic.Object(), cached.Object(), vital.Object(),
                                          user.Object(), schema_->GetSchemaPlace());
  CheckRemovals(removals_, result, byUser_ ? "automatic" : "the user's", schema_->GetSchemaPlace());
  ValidateUpdated(schema_, result, written);
  return {user.Text(), automatic.Text(), vital.Text(), cached.Text()};
}

}  // namespace TarnConfigStore
