#include "store/update.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/division.h"
#include "objects/merge.h"
#include "persistence/boot_flags.h"
#include "persistence/statements.h"
#include "persistence/write_by_context.h"
#include "store/under_transaction.h"
#include "validation/object_validation.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TarnConfigStore {
namespace {

UPDATE_CONTEXT UpdateContextOf(const USERDATA_CONTEXT& context) {
  if (context != EXTERNAL) {
    return UPDATE_AUTOMATIC;
  }
  return ReadUpgradeContext() == 0 ? UPDATE_USER : UPDATE_DURING_UPGRADE;
}

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

class Update {
 public:
  Update(const ObjectHandle& object, const Removals& removals, const SchemaHandle& schema,
         const USERDATA_CONTEXT& context, const DBStore::ConnectionHandle& connection)
      : id_(object->GetConfigStoreObjectId()),
        removals_(removals),
        schema_(schema),
        context_(context),
        connection_(connection) {
    GiveGeneratedIds(*object, *schema);
    // What only takes away has nothing to lay over any part.
    if (removals.Empty() ||
        !schema->GetSchemaPlace().HoldsNothingBesideId(Internal::Access::Of(*object).GetRoot())) {
      changes_ = DivideObject(*object, *schema, context).values;
    }
  }

  /// Reads the row, and works out and checks what becomes of it.
  void Prepare() {
    row_ = Read();
    updateContext_ = UpdateContextOf(context_);
    const bool byUser = context_ == EXTERNAL;
    Layer automatic(row_, "AutoConfValue", id_, schema_);
    Layer cached(row_, "CachedValue", id_, schema_);
    Layer vital(row_, "VitalValue", id_, schema_);
    // A user's change is laid over what a reader of this moment sees as the user's.
    const bool pending = updateContext_ == UPDATE_DURING_UPGRADE && row_.Find("DesiredValue");
    Layer user(row_, pending ? "DesiredValue" : "UserValue", id_, schema_);
    unsigned written = PartsOf(changes_);
    if (!removals_.Empty()) {
      for (const auto& [layer, kind] :
           {std::pair(byUser ? &user : &automatic, Json::Kind::USER),
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
    CheckRemovals(result, byUser ? "automatic" : "the user's");
    ValidateUpdated(schema_, result, written);
    layers_ = {user.Text(), automatic.Text(), vital.Text(), cached.Text()};
  }

  /// Whether the row is still the one that was read.
  bool IsCurrent() const { return updateContext_ == UpdateContextOf(context_) && row_ == Read(); }

  void Write() const {
    WriteLayersByContext(id_, layers_, schema_->GetVersion(), updateContext_, connection_);
  }

 private:
  RowMap Read() const { return ReadRowMap(connection_, READ_TABLE_CONFIG, id_); }

  void CheckRemovals(const ObjectHandle& result, const char* holder) const {
    if (removals_.Empty()) {
      return;
    }
    std::vector<ErrorInfo> findings;
    if (!result) {
      Refuse({{"/", "nothing would be left of the object; delete it instead"}});
    }
    const Json::Value& data = Internal::Access::Of(*result).GetRoot();
    removals_.CheckGone(data, holder, findings);
    if (schema_->GetSchemaPlace().HoldsNothingBesideId(data)) {
      findings.push_back({"/", "nothing would be left of the object; delete it instead"});
    }
    if (!findings.empty()) {
      Refuse(findings);
    }
  }

  const ConfigStoreObjectId& id_;
  const Removals& removals_;
  const SchemaHandle& schema_;
  const USERDATA_CONTEXT context_;
  const DBStore::ConnectionHandle& connection_;
  ColumnValues changes_;
  RowMap row_;
  UPDATE_CONTEXT updateContext_ = UPDATE_USER;
  ColumnValues layers_;
};

}  // namespace

void UpdateInternal(ConfigStore& store, const ObjectHandle& object, const Removals& removals,
                    const SchemaHandle& schema, const USERDATA_CONTEXT& context,
                    const DBStore::ConnectionHandle& connection) {
  Update update(object, removals, schema, context, connection);
  const DBStore::Turn turn(connection);
  if (DBStore::IsInTransaction(connection)) {
    update.Prepare();
    update.Write();
    return;
  }
  // Where others change the row again and again, they wait in the end.
  constexpr int kAttempts = 4;
  bool written = false;
  for (int attempt = 1; !written; ++attempt) {
    const bool letOthersWait = attempt == kAttempts;
    if (!letOthersWait) {
      update.Prepare();
    }
    RunUnderTransaction(store, connection, "Update", [&] {
      if (letOthersWait) {
        update.Prepare();
      } else if (!update.IsCurrent()) {
        return;
      }
      update.Write();
      written = true;
    });
  }
}

}  // namespace TarnConfigStore
