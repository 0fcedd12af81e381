#include "tarnconfigstore/next_boot_update.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/generated_ids.h"
#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/boot_statements.h"
#include "persistence/connection.h"
#include "persistence/next_boot_records.h"
#include "persistence/prefix_rows.h"
#include "persistence/statements.h"
#include "store/boot_context.h"
#include "store/layer_update.h"
#include "store/staged_content.h"
#include "store/trace.h"
#include "store/under_transaction.h"
#include "store/working_objects.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {
namespace {

// What is staged of an object: its own change or, where it has none, the deletion of all of its type.
std::optional<NextBootAction> FindStagedAction(const ConfigStoreObjectId& id,
                                               const DBStore::ConnectionHandle& connection) {
  std::optional<NextBootAction> own;
  bool allGo = false;
  ForEachRowUnder({id.key, id.group, id.component}, LIST_STAGED, connection,
                  [&](const RowMap& row) {
                    if (row.Text("Identifier") == id.instanceId) {
                      own = ActionFromRow(row);
                    }
                    allGo = allGo || ActionFromRow(row) == NextBootAction::DELETE;
                  });
  return own || !allGo ? own : NextBootAction::DELETE;
}

// The values that are changed: those that staging replaces.
RowMap ReadNewestValues(const ConfigStoreObjectId& id,
                        const DBStore::ConnectionHandle& connection) {
  const std::optional<NextBootAction> staged = FindStagedAction(id, connection);
  if (staged && *staged != NextBootAction::SET) {
    std::vector<ErrorInfo> findings = {
        {"/", "the object is staged to be deleted: take that back first, or stage all of it"}};
    ThrowException<ValidationException>(CS_UPDATE_INVALID, findings);
  }
  if (staged) {
    return ReadRowMap(connection, READ_STAGED_INSTANCE, id);
  }
  const RowMap row = ReadRowMap(connection, READ_TABLE_CONFIG, id);
  ColumnValues values;
  const auto take = [&row](std::string_view column, std::optional<std::string>& value) {
    if (const auto text = row.Find(column)) {
      value = *text;
    }
  };
  take(NewestUserColumn(row), values.user);
  take("VitalValue", values.vital);
  take("CachedValue", values.cached);
  return StagedContentRow(values);
}

class StagedUpdate {
 public:
  StagedUpdate(const ObjectHandle& object, const Removals& removals, const SchemaHandle& schema,
               const DBStore::ConnectionHandle& connection)
      : id_(object->GetConfigStoreObjectId()),
        onlyTakesAway_(
            schema->GetSchemaPlace().HoldsNothingBesideId(Internal::Access::Of(*object).GetRoot())),
        change_(object, removals, schema, EXTERNAL),
        schema_(schema),
        connection_(connection) {}

  /// Answers whether anything changes.
  bool Stage() const {
    RequireNoRemediation(connection_);
    const RowMap values = ReadNewestValues(id_, connection_);
    const ObjectHandle before = MergeParts(values, "UserValue", id_, schema_);
    if (!before && onlyTakesAway_) {
      return false;
    }
    const ObjectHandle after =
        MergeParts(StagedContentRow(change_.Over(values, false)), "UserValue", id_, schema_);
    if (before && EqualButForGeneratedIds(Internal::Access::Of(*before).GetRoot(),
                                          Internal::Access::Of(*after).GetRoot())) {
      return false;
    }
    ValidateSet(schema_, after);
    ValidateEmptyObject(after);
    SetRebootRequiredConfigInternal(after, schema_, connection_);
    return true;
  }

 private:
  const ConfigStoreObjectId& id_;
  const bool onlyTakesAway_;
  const LayerUpdate change_;
  const SchemaHandle& schema_;
  const DBStore::ConnectionHandle& connection_;
};

}  // namespace

bool UpdateNextBoot(const std::shared_ptr<ConfigStoreObject>& object) {
  if (IsNull(object, "UpdateNextBoot")) {
    return false;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kWriteCall, "UpdateNextBoot", csoId, EXTERNAL);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(object, schema);
  ValidateRebootRequiredConfig(schema);
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  RequireNextBootStore(connection);
  const Removals removals(Internal::Access::Of(*object).GetRoot(), schema->GetSchemaPlace());
  WorkingObjects working;
  working.Add(schema, object, !removals.Empty());
  ValidateChange(object, removals, schema);
  bool staged = false;
  if (!removals.Empty() || !ObjIsEmpty(object, "UpdateNextBoot")) {
    const StagedUpdate update(object, removals, schema, connection);
    RunUnderTransaction(connection, "UpdateNextBoot", [&] { staged = update.Stage(); });
  }
  working.Keep();
  return staged;
}

}  // namespace TarnConfigStore
