#include "persistence/delete_config.h"

#include "errors/raise.h"

namespace TarnConfigStore {
namespace {

bool Runs(const DBStore::ConnectionHandle& connection, const DBStore::StatementHandle& statement) {
  return DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, DBStore::kWaitLimit) == 0;
}

bool RunsForType(const TypeStatement& statement, const ConfigStoreObjectId& id,
                 const DBStore::ConnectionHandle& connection) {
  return Runs(connection, statement.PrepareAndBind(connection, id.key, id.group, id.component));
}

}  // namespace

void DeleteInternal(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection) {
  if (!Runs(connection,
            DELETE_ROW.PrepareAndBind(connection, id.key, id.group, id.component, id.instanceId))) {
    ThrowFailure("Delete failed: " + id.toString());
  }
}

void DeleteInstancesInternal(const ConfigStoreObjectId& id,
                             const DBStore::ConnectionHandle& connection) {
  if (!RunsForType(DELETE_INSTANCES, id, connection)) {
    ThrowFailure("Delete instances failed: " + id.toString());
  }
}

void DeleteVitalConfigInstances(const ConfigStoreObjectId& id,
                                const DBStore::ConnectionHandle& connection) {
  DeletePartialConfigInstances(DELETE_VITAL_VALUES, id, connection);
}

void DeleteCachedConfigInstances(const ConfigStoreObjectId& id,
                                 const DBStore::ConnectionHandle& connection) {
  DeletePartialConfigInstances(DELETE_CACHED_VALUES, id, connection);
}

void DeleteUserConfigInstances(const ConfigStoreObjectId& id,
                               const DBStore::ConnectionHandle& connection) {
  DeletePartialConfigInstances(DELETE_USER_VALUES, id, connection);
}

void DeleteAutoConfConfigInstances(const ConfigStoreObjectId& id,
                                   const DBStore::ConnectionHandle& connection) {
  DeletePartialConfigInstances(DELETE_AUTOMATIC_VALUES, id, connection);
}

void DeletePartialConfigInstances(const TypeStatement& statement, const ConfigStoreObjectId& id,
                                  const DBStore::ConnectionHandle& connection) {
  if (!RunsForType(statement, id, connection)) {
    ThrowFailure("Failed to Delete in SetConfigInstancesInternal");
  }
}

}  // namespace TarnConfigStore
