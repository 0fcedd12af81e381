#include "persistence/next_boot_records.h"

#include "errors/raise.h"
#include "objects/division.h"
#include "objects/filter.h"
#include "persistence/binder.h"
#include "persistence/boot_flags.h"
#include "persistence/boot_statements.h"
#include "persistence/read_current.h"

#include <array>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace TarnConfigStore {
namespace {

constexpr std::pair<NextBootAction, std::string_view> kActions[] = {
    {NextBootAction::SET, "SET"},
    {NextBootAction::DELETE, "DELETE"},
    {NextBootAction::DELETE_INSTANCE, "DELETE_INSTANCE"},
};

std::string_view TextOf(NextBootAction action) {
  for (const auto& [known, text] : kActions) {
    if (known == action) {
      return text;
    }
  }
  return {};
}

void WriteContent(const DBStore::StatementHandle& statement, const ConfigStoreObjectId& id,
                  const std::string& version, const ColumnValues& values,
                  const DBStore::ConnectionHandle& connection) {
  if (!Binder(connection, statement)
           .Text(id.instanceId, id.key, id.group, id.component, version)
           .Nullable(values.user, values.vital, values.cached)
           .Text(TextOf(NextBootAction::SET))
           .Execute()) {
    ThrowFailure("Failed to update reboot-required configuraition.");
  }
}

DBStore::StatementHandle PrepareContent(const DBStore::ConnectionHandle& connection) {
  return DBStore::internal::Prepare(connection, STAGE_SET, DBStore::kWaitLimit);
}

void StageContent(const std::vector<ObjectHandle>& objects,
                  const TarnSchemaStore::SchemaObject& schema,
                  const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement = PrepareContent(connection);
  for (const ObjectHandle& object : objects) {
    GiveGeneratedIds(*object, schema);
    const auto& [id, values] = DivideObject(*object, schema, EXTERNAL);
    WriteContent(statement, *id, schema.GetVersion(), values, connection);
  }
}

void WriteDeletion(const ConfigStoreObjectId& id, NextBootAction action, const std::string& version,
                   const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, STAGE_DELETE, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(id.instanceId, id.key, id.group, id.component, version, TextOf(action))
           .Execute()) {
    ThrowFailure("Failed to delete reboot-required configuraition.");
  }
}

void StageDeletion(const ConfigStoreObjectId& id, const TarnSchemaStore::SchemaObject& schema,
                   const DBStore::ConnectionHandle& connection) {
  WriteDeletion(id,
                schema.IsNonSingleton() ? NextBootAction::DELETE_INSTANCE : NextBootAction::DELETE,
                schema.GetVersion(), connection);
}

void Run(const DBStore::StatementHandle& statement, const ConfigStoreObjectId& id,
         const DBStore::ConnectionHandle& connection) {
  if (DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, DBStore::kWaitLimit) != 0) {
    ThrowFailure("Failed to clear RebootRequired config for csoId: " + id.toString());
  }
}

void TakeBack(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection) {
  Run(UNSTAGE_TYPE.PrepareAndBind(connection, id.key, id.group, id.component), id, connection);
}

// What is staged of a type but not of these objects. A record that stays is replaced where it is: the
// platform remembers what there was when it was first staged.
void TakeBackOthers(const std::vector<ObjectHandle>& objects,
                    const DBStore::ConnectionHandle& connection) {
  const ConfigStoreObjectId& type = objects.front()->GetConfigStoreObjectId();
  std::unordered_set<std::string_view> staying;
  for (const ObjectHandle& object : objects) {
    staying.insert(object->GetConfigStoreObjectId().instanceId);
  }
  std::vector<ConfigStoreObjectId> going;
  ForEachRow(connection, READ_STAGED_IDS.Text(), type, [&](const RowMap& row) {
    const std::string_view instance = row.Text("Identifier");
    if (!staying.contains(instance)) {
      going.emplace_back(type.key, type.group, type.component, std::string(instance));
    }
  });
  for (const ConfigStoreObjectId& id : going) {
    RemoveStagedChange(id, connection);
  }
}

}  // namespace

void SetRebootRequiredConfigInternal(const ObjectHandle& object, const SchemaHandle& schema,
                                     const DBStore::ConnectionHandle& connection) {
  RequireNoRemediation(connection);
  StageContent({object}, *schema, connection);
  AnnounceStagedChanges(connection);
}

void SetRebootRequiredConfigInstancesInternal(const std::vector<ObjectHandle>& objects,
                                              const SchemaHandle& schema,
                                              const DBStore::ConnectionHandle& connection) {
  RequireNoRemediation(connection);
  TakeBackOthers(objects, connection);
  StageContent(objects, *schema, connection);
  AnnounceStagedChanges(connection);
}

void ClearRebootRequiredConfigInstances(const ConfigStoreObjectId& id,
                                        const SchemaHandle& /*schema*/,
                                        const DBStore::ConnectionHandle& connection) {
  RequireNoRemediation(connection);
  TakeBack(id, connection);
}

void DeleteRebootRequiredConfigInternal(const ConfigStoreObjectId& id, const SchemaHandle& schema,
                                        const DBStore::ConnectionHandle& connection) {
  RequireNoRemediation(connection);
  StageDeletion(id, *schema, connection);
  AnnounceStagedChanges(connection);
}

void DeleteRebootRequiredConfigInstancesInternal(const std::shared_ptr<FilterSpecObject>& filter,
                                                 const SchemaHandle& schema,
                                                 const DBStore::ConnectionHandle& connection) {
  RequireNoRemediation(connection);
  for (const ObjectHandle& object : GetConfigInstancesInternal(filter, connection, schema)) {
    StageDeletion(object->GetConfigStoreObjectId(), *schema, connection);
  }
  AnnounceStagedChanges(connection);
}

ObjectHandle GetRebootRequiredConfigInternal(const ConfigStoreObjectId& id,
                                             const SchemaHandle& schema,
                                             const DBStore::ConnectionHandle& connection) {
  return MergeParts(ReadRowMap(connection, READ_STAGED_INSTANCE, id), "UserValue", id, schema);
}

std::vector<ObjectHandle> GetRebootRequiredConfigInstancesInternal(
    const std::shared_ptr<FilterSpecObject>& filter, const SchemaHandle& schema,
    const DBStore::ConnectionHandle& connection) {
  const ConfigStoreObjectId& id = filter->GetConfigStoreObjectId();
  if (!id.instanceId.empty()) {
    return FilterConfigStoreObjects(ListOf(GetRebootRequiredConfigInternal(id, schema, connection)),
                                    filter);
  }
  return FilterConfigStoreObjects(
      ObjectsOfType(connection, READ_STAGED_INSTANCES.Text(), id,
                    [&schema](const RowMap& row, const ConfigStoreObjectId& instance) {
                      return MergeParts(row, "UserValue", instance, schema);
                    }),
      filter);
}

void ForEachStagedChange(const DBStore::ConnectionHandle& connection, const RowVisitor& receiver) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, READ_STAGED, DBStore::kWaitLimit);
  ForEachRow(connection, statement, "Get store rows failed.", receiver);
}

RowMap StagedContentRow(const ColumnValues& values) {
  const auto text = [](const std::optional<std::string>& value) {
    return value ? value->c_str() : nullptr;
  };
  constexpr std::array<const char*, 3> kNames = {"UserValue", "VitalValue", "CachedValue"};
  const std::array<const char*, kNames.size()> texts = {text(values.user), text(values.vital),
                                                        text(values.cached)};
  RowMap row;
  row.Put(static_cast<int>(kNames.size()), texts.data(), kNames.data());
  return row;
}

void WriteStagedRecord(const ConfigStoreObjectId& id, NextBootAction action,
                       const std::string& version, const ColumnValues& values,
                       const DBStore::ConnectionHandle& connection) {
  if (action == NextBootAction::SET) {
    WriteContent(PrepareContent(connection), id, version, values, connection);
  } else {
    WriteDeletion(id, action, version, connection);
  }
}

std::optional<NextBootAction> FindAction(const RowMap& row) {
  const std::string_view text = row.Text("BootAction");
  for (const auto& [action, known] : kActions) {
    if (known == text) {
      return action;
    }
  }
  return std::nullopt;
}

NextBootAction ActionFromRow(const RowMap& row) {
  if (const std::optional<NextBootAction> action = FindAction(row)) {
    return *action;
  }
  ThrowFailure("Unknown action for the next boot: " + std::string(row.Text("BootAction")) +
               ", for " + IdFromRow(row).toString());
}

void RemoveStagedChange(const ConfigStoreObjectId& id,
                        const DBStore::ConnectionHandle& connection) {
  Run(UNSTAGE_INSTANCE.PrepareAndBind(connection, id.key, id.group, id.component, id.instanceId),
      id, connection);
}

void RemoveStagedChanges(const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, UNSTAGE_ALL, DBStore::kWaitLimit);
  if (DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, DBStore::kWaitLimit) != 0) {
    ThrowFailure("Failed to clear RebootRequired config");
  }
}

}  // namespace TarnConfigStore
