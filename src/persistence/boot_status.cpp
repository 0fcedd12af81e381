#include "persistence/boot_status.h"

#include "errors/raise.h"
#include "objects/config_store_object_impl.h"
#include "objects/division.h"
#include "objects/filter.h"
#include "objects/merge.h"
#include "persistence/binder.h"
#include "persistence/statements.h"

namespace TarnConfigStore {
namespace {

constexpr const char* kNotConfirmed =
    "SetBootStatus: Failed to mark success status for given csoId.";

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
    Run(DROP_PENDING_OF_INSTANCE, DROP_PENDING_OF_TYPE, id, connection,
        "DeleteDesiredValue: Failed to delete DesiredValue for given csoId.");
  }
}

void SetPartialBootStatusInternal(const ObjectHandle& object, const SchemaHandle& schema,
                                  const DBStore::ConnectionHandle& connection) {
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  const RowMap row = ReadRowMap(connection, READ_TABLE_CONFIG, id);
  const ObjectHandle pending = MakeObjectFromRow(row, "DesiredValue", id, schema);
  if (!pending) {
    ThrowFailure("desired config is empty");
  }
  if (!IsSubset(object->GetImplementation()->GetRoot(), pending->GetImplementation()->GetRoot())) {
    ThrowFailure("partial config being restored is not part of desired config");
  }
  GiveGeneratedIds(*object, *schema);
  const std::string user =
      UpdateConfigInternal(object, MakeObjectFromRow(row, "UserValue", id, schema),
                           schema->GetSchemaPlace())
          ->GetImplementation()
          ->GetSerializedData();
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, CONFIRM_PART, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(user, id.key, id.group, id.component, id.instanceId)
           .Execute()) {
    ThrowFailure(kNotConfirmed);
  }
}

}  // namespace TarnConfigStore
