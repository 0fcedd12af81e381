#include "tarnconfigstore/boot_state.h"

#include "platform/logger.h"

#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/boot_status.h"
#include "persistence/connection.h"
#include "persistence/desired_view.h"
#include "store/under_transaction.h"
#include "store/working_objects.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

DBStore::ConnectionHandle Connect() {
  return GetDBStore(DBStore::Type::CURRENT_STORE, true);
}

}  // namespace

int GetUpgradeContext() {
  return ReadUpgradeContext();
}

void SetBootStatus(const ConfigStoreObjectId& csoId, bool status) {
  SetBootStatusInternal(csoId, status, Connect());
}

void SetBootStatus(const std::vector<ConfigStoreObjectId>& csoIds, bool status) {
  const DBStore::ConnectionHandle connection = Connect();
  RunUnderTransaction(connection, "SetBootStatus", [&] {
    for (const ConfigStoreObjectId& csoId : csoIds) {
      SetBootStatusInternal(csoId, status, connection);
    }
  });
}

void SetSharedBootStatus(bool status) {
  const DBStore::ConnectionHandle connection = Connect();
  const AttachedSchemaStore types(connection);
  RunUnderTransaction(connection, "SetSharedBootStatus",
                      [&] { SetSharedBootStatusInternal(status, connection); });
}

void SetPartialBootStatus(std::shared_ptr<ConfigStoreObject> object) {
  if (IsNull(object, "SetPartialBootStatus")) {
    return;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  const SchemaHandle schema = FindSchema(csoId);
  CheckSchema(csoId, schema);
  WorkingObjects working;
  working.Add(schema, object);
  ValidatePartialConfig(schema, object);
  if (ObjIsEmpty(object, "SetPartialBootStatus")) {
    working.Keep();
    return;
  }
  const DBStore::ConnectionHandle connection = Connect();
  RunUnderTransaction(connection, "SetPartialBootStatus", [&] {
    SetPartialBootStatusInternal(object, schema, connection, [&](const ObjectHandle& result) {
      ValidateRestored(schema, result);
    });
  });
  working.Keep();
}

std::shared_ptr<ConfigStoreObject> GetDesiredUserConfig(const ConfigStoreObjectId& csoId,
                                                        FLAG flag) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "GetDesiredUserConfig");
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(csoId, schema);
  return GetDesiredInternal(csoId, Connect(), schema, flag);
}

std::vector<std::shared_ptr<ConfigStoreObject>> GetDesiredUserConfigInstances(
    const ConfigStoreObjectId& csoId, FLAG flag) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "GetDesiredUserConfigInstances");
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoIdInstances(csoId, schema);
  return GetDesiredUserConfigInstancesInternal(csoId, Connect(), schema, flag);
}

std::string GetSchemaVersion(const ConfigStoreObjectId& csoId) {
  const SchemaHandle schema = FindSchema(csoId);
  if (!schema) {
    CSLogger::Log(CSLogger::kFailure, "%s: Schema object not found", "GetSchemaVersion");
    return {};
  }
  return schema->GetVersion();
}

}  // namespace TarnConfigStore
