#include "store/layer_update.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/document.h"
#include "objects/merge.h"
#include "validation/object_validation.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TarnConfigStore {
namespace {

// One value of a row, with a change laid over it.
class Layer {
 public:
  Layer(const RowMap& row, std::string_view column, const ConfigStoreObjectId& id,
        const SchemaHandle& schema)
      : id_(id),
        schema_(schema),
        object_(MakeObjectFromRow(row, column, id, schema)),
        given_(row.Find(column)) {}

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
    given_.reset();
    return true;
  }

  /// \param change  null where this part gets nothing
  void LayOver(const Json::Value* change) {
    if (change == nullptr) {
      return;
    }
    if (!object_) {
      object_ = MakeObject(CreateDocument(), id_, schema_);
    }
    ConfigStoreObjectImpl& data = Internal::Access::Of(*object_);
    if (data.GetRoot().IsNull()) {
      Json::CopyInto(data.GetRoot(), *change, data.GetAllocator());
    } else {
      MergeValue(*change, data.GetRoot(), schema_->GetSchemaPlace(), data.GetAllocator());
    }
    text_ = data.GetSerializedData();
    given_.reset();
  }

  const ObjectHandle& Object() const { return object_; }
  /// What was not changed keeps its very text.
  std::optional<std::string> TakeText() {
    return given_ ? std::optional<std::string>(*given_) : std::move(text_);
  }

 private:
  const ConfigStoreObjectId& id_;
  const SchemaHandle& schema_;
  ObjectHandle object_;
  std::optional<std::string_view> given_;  // the row's, until it is changed
  std::optional<std::string> text_;        // of what it was changed to
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
    changes_.emplace(Internal::Access::Of(*object).GetRoot(), schema->GetSchemaPlace());
  }
}

ColumnValues LayerUpdate::Over(const RowMap& row, bool duringUpgrade) const {
  Layer automatic(row, "AutoConfValue", id_, schema_);
  Layer cached(row, "CachedValue", id_, schema_);
  Layer vital(row, "VitalValue", id_, schema_);
  // A user's change is laid over what a reader of this moment sees as the user's.
  const bool pending = duringUpgrade && row.Find("DesiredValue");
  Layer user(row, pending ? "DesiredValue" : "UserValue", id_, schema_);
  unsigned written = changes_ ? changes_->Parts() : 0U;
  if (!removals_.Empty()) {
    for (const auto& [layer, kind] :
         {std::pair(byUser_ ? &user : &automatic, Json::Kind::USER),
          std::pair(&vital, Json::Kind::VITAL), std::pair(&cached, Json::Kind::CACHED)}) {
      written |= layer->Take(removals_) ? static_cast<unsigned>(kind) : 0U;
    }
  }
  if (changes_) {
    (byUser_ ? user : automatic).LayOver(changes_->Of(Json::Kind::USER));
    cached.LayOver(changes_->Of(Json::Kind::CACHED));
    vital.LayOver(changes_->Of(Json::Kind::VITAL));
  }

  const ObjectHandle result = MergeConfig(automatic.Object(), cached.Object(), vital.Object(),
                                          user.Object(), schema_->GetSchemaPlace());
  CheckRemovals(removals_, result, byUser_ ? "automatic" : "the user's", schema_->GetSchemaPlace());
  ValidateUpdated(schema_, result, written);
  return {user.TakeText(), automatic.TakeText(), vital.TakeText(), cached.TakeText()};
}

}  // namespace TarnConfigStore
