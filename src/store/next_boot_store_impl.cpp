#include "store/next_boot_store_impl.h"

#include "tarnconfigstore/contexts.h"

#include "platform/logger.h"

#include "objects/schema_lookup.h"
#include "persistence/next_boot_records.h"
#include "store/bulk_lists.h"
#include "store/trace.h"
#include "store/under_transaction.h"
#include "store/working_objects.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

#include <utility>

namespace TarnConfigStore {
namespace {

// Reads too are of note here.
void Trace(const char* operation, const ConfigStoreObjectId& id) {
  LogStoreCall(CSLogger::kWriteCall, operation, id, EXTERNAL);
}

// The type of an object that can be staged.
SchemaHandle StageableType(const ConfigStoreObjectId& csoId) {
  SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(csoId, schema);
  ValidateRebootRequiredConfig(schema);
  return schema;
}

// The same for one whose instances are meant.
SchemaHandle StageableTypeWithInstances(const ConfigStoreObjectId& csoId) {
  SchemaHandle schema = FindSchema(csoId);
  ValidateCsoIdInstances(csoId, schema);
  ValidateRebootRequiredConfig(schema);
  return schema;
}

void AddContent(WorkingObjects& working, const SchemaHandle& schema, const ObjectHandle& object) {
  working.AddForSet(schema, object);
  ValidateEmptyObject(object);
}

}  // namespace

NextBootStoreImpl::NextBootStoreImpl(DBStore::ConnectionHandle connection)
    : connection_(std::move(connection)) {}

template <class T>
void NextBootStoreImpl::ExecuteUnderTransaction(
    const T& argument, const std::shared_ptr<TarnSchemaStore::SchemaObject>& schema,
    void (*operation)(const T&, const std::shared_ptr<TarnSchemaStore::SchemaObject>&,
                      const DBStore::ConnectionHandle&)) {
  RunUnderTransaction(connection_, "ExecuteUnderTransaction",
                      [&] { operation(argument, schema, connection_); });
}

#define TARN_EXECUTE_UNDER_TRANSACTION(T)                                       \
  template void NextBootStoreImpl::ExecuteUnderTransaction(                     \
      const T&, const std::shared_ptr<TarnSchemaStore::SchemaObject>&,          \
      void (*)(const T&, const std::shared_ptr<TarnSchemaStore::SchemaObject>&, \
               const DBStore::ConnectionHandle&));
TARN_EXECUTE_UNDER_TRANSACTION(std::shared_ptr<ConfigStoreObject>)
TARN_EXECUTE_UNDER_TRANSACTION(ConfigStoreObjectId)
TARN_EXECUTE_UNDER_TRANSACTION(std::vector<std::shared_ptr<ConfigStoreObject>>)
TARN_EXECUTE_UNDER_TRANSACTION(std::shared_ptr<FilterSpecObject>)
#undef TARN_EXECUTE_UNDER_TRANSACTION

std::shared_ptr<ConfigStoreObject> NextBootStoreImpl::Get(const ConfigStoreObjectId& csoId) {
  Trace("Get", csoId);
  const SchemaHandle schema = StageableType(csoId);
  return GetRebootRequiredConfigInternal(csoId, schema, connection_);
}

void NextBootStoreImpl::Set(std::shared_ptr<ConfigStoreObject> object) {
  if (IsNull(object, "Set")) {
    return;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  Trace("Set", csoId);
  const SchemaHandle schema = StageableType(csoId);
  ValidateWritableInstanceId(csoId);
  WorkingObjects working;
  AddContent(working, schema, object);
  ExecuteUnderTransaction(object, schema, SetRebootRequiredConfigInternal);
  working.Keep();
}

void NextBootStoreImpl::Delete(const ConfigStoreObjectId& csoId) {
  Trace("Delete", csoId);
  const SchemaHandle schema = StageableType(csoId);
  ExecuteUnderTransaction(csoId, schema, DeleteRebootRequiredConfigInternal);
}

void NextBootStoreImpl::Reset(const ConfigStoreObjectId& csoId) {
  Trace("Reset", csoId);
  const SchemaHandle schema = FindSchema(csoId);
  // All of the type is taken back, so the instance id does not matter.
  CheckSchema(csoId, schema);
  ValidateRebootRequiredConfig(schema);
  ExecuteUnderTransaction(csoId, schema, ClearRebootRequiredConfigInstances);
}

void NextBootStoreImpl::SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) {
  const ConfigStoreObjectId first = DropEmptyHandles(objects, "SetInstances");
  Trace("SetInstances", first);
  const SchemaHandle schema = StageableTypeWithInstances(first);
  WorkingObjects working;
  CheckInstances(objects, first,
                 [&](const ObjectHandle& object) { AddContent(working, schema, object); });
  ExecuteUnderTransaction(objects, schema, SetRebootRequiredConfigInstancesInternal);
  working.Keep();
}

std::vector<std::shared_ptr<ConfigStoreObject>> NextBootStoreImpl::GetInstances(
    const std::shared_ptr<FilterSpecObject>& filter) {
  if (IsNull(filter, "GetInstances")) {
    return {};
  }
  const ConfigStoreObjectId& csoId = filter->GetConfigStoreObjectId();
  Trace("GetInstances", csoId);
  const SchemaHandle schema = StageableTypeWithInstances(csoId);
  return GetRebootRequiredConfigInstancesInternal(filter, schema, connection_);
}

void NextBootStoreImpl::DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) {
  if (IsNull(filter, "DeleteInstances")) {
    return;
  }
  const ConfigStoreObjectId& csoId = filter->GetConfigStoreObjectId();
  Trace("DeleteInstances", csoId);
  const SchemaHandle schema = StageableTypeWithInstances(csoId);
  ExecuteUnderTransaction(filter, schema, DeleteRebootRequiredConfigInstancesInternal);
}

}  // namespace TarnConfigStore
