#include "tarnconfigstore/kernel_options.h"

#include "tarnconfigstore/contexts.h"

#include "platform/logger.h"

#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/connection.h"
#include "persistence/kernel_option_rows.h"
#include "store/trace.h"
#include "store/under_transaction.h"
#include "store/working_objects.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

SchemaHandle CheckedSchema(const ConfigStoreObjectId& csoId) {
  ValidateKernelOptionsCsoId(csoId);
  SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(csoId, schema);
  return schema;
}

}  // namespace

std::shared_ptr<ConfigStoreObject> GetKernelOptions(const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "GetKernelOptions", csoId, EXTERNAL);
  const SchemaHandle schema = CheckedSchema(csoId);
  return GetKernelOptionsInternal(csoId, GetDBStore(DBStore::Type::CURRENT_STORE, true), schema);
}

void SetKernelOptions(std::shared_ptr<ConfigStoreObject> object) {
  if (IsNull(object, "SetKernelOptions")) {
    return;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kWriteCall, "SetKernelOptions", csoId, EXTERNAL);
  const SchemaHandle schema = CheckedSchema(csoId);
  WorkingObjects working;
  working.AddForSet(schema, object);
  ValidateNoCachedData(schema, object);
  if (ObjIsEmpty(object, "SetKernelOptions")) {
    working.Keep();
    return;
  }
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  RunUnderTransaction(connection, "SetKernelOptions", [&] {
    RequireNoRemediation(connection);
    SetKernelOptionsInternal(object, schema, connection);
  });
  working.Keep();
}

}  // namespace TarnConfigStore
