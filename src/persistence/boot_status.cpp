#include "persistence/boot_status.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/filter.h"
#include "objects/generated_ids.h"
#include "objects/merge.h"
#include "persistence/binder.h"
#include "persistence/boot_statements.h"
#include "persistence/statements.h"

#include <utility>

namespace TarnConfigStore {
namespace {

constexpr const char* kNotConfirmed =
    "SetBootStatus: Failed to mark success status for given csoId.";
constexpr const char* kNotDropped =
    "DeleteDesiredValue: Failed to delete DesiredValue for given csoId.";

// For one instance or, without an instance id, all rows of a type. A type without instances has one
// row, so both come to the same there.
void Run(const InstanceStatement& one, const TypeStatement& all, const ConfigStoreObjectId& id,
         const DBStore::ConnectionHandle& connection, const char* failure) {
  const DBStore::StatementHandle statement =
      id.instanceId.empty()
          ? all.PrepareAndBind(connection, id.key, id.group, id.component)
          : one.PrepareAndBind(connection, id.key, id.group, id.component, id.instanceId);
  if (DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, DBStore::kWaitLimit) != 0) {
    ThrowFailure(failure);
  }
}

}  // namespace

void SetBootStatusInternal(const ConfigStoreObjectId& id, bool status,
                           const DBStore::ConnectionHandle& connection) {
  if (status) {
    Run(CONFIRM_INSTANCE, CONFIRM_TYPE, id, connection, kNotConfirmed);
  } else {
    Run(DROP_PENDING_OF_INSTANCE, DROP_PENDING_OF_TYPE, id, connection, kNotDropped);
  }
}

void SetSharedBootStatusInternal(bool status, const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement = DBStore::internal::Prepare(
      connection, status ? CONFIRM_SHARED : DROP_PENDING_OF_SHARED, DBStore::kWaitLimit);
  if (DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, DBStore::kWaitLimit) != 0) {
    ThrowFailure(status ? kNotConfirmed : kNotDropped);
  }
}

AttachedSchemaStore::AttachedSchemaStore(DBStore::ConnectionHandle connection)
    : connection_(std::move(connection)) {
  if (DBStore::AttachSchemaStore(connection_) != 0) {
    ThrowFailure("Failed to attach schema store");
  }
}

AttachedSchemaStore::~AttachedSchemaStore() {
  DBStore::DetachSchemaStore(connection_);
}

void SetPartialBootStatusInternal(const ObjectHandle& object, const SchemaHandle& schema,
                                  const DBStore::ConnectionHandle& connection,
                                  const std::function<void(const ObjectHandle&)>& judge) {
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  const RowMap row = ReadRowMap(connection, READ_TABLE_CONFIG, id);
  const ObjectHandle desired =
      MakeObjectFromRow(row, row.Find("DesiredValue") ? "DesiredValue" : "UserValue", id, schema);
  if (!desired) {
    ThrowFailure("desired config is empty");
  }
  ConfigStoreObjectImpl& part = Internal::Access::Of(*object);
  const Json::Value& whole = Internal::Access::Of(*desired).GetRoot();
  if (!IsSubset(part.GetRoot(), whole)) {
    ThrowFailure("partial config being restored is not part of desired config");
  }
  AdoptGeneratedIds(part.GetRoot(), whole, schema->GetSchemaPlace(), part.GetAllocator());
  const ObjectHandle user = UpdateConfigInternal(
      object, MakeObjectFromRow(row, "UserValue", id, schema), schema->GetSchemaPlace());
  const std::string text = Internal::Access::Of(*user).GetSerializedData();
  judge(MergeConfig(MakeObjectFromRow(row, "AutoConfValue", id, schema),
                    MakeObjectFromRow(row, "CachedValue", id, schema),
                    MakeObjectFromRow(row, "VitalValue", id, schema), MakeObject(text, id, schema),
                    schema->GetSchemaPlace()));
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, CONFIRM_PART, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(text, id.key, id.group, id.component, id.instanceId)
           .Execute()) {
    ThrowFailure(kNotConfirmed);
  }
}

}  // namespace TarnConfigStore
