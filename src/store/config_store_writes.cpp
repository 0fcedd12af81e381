#include "tarnconfigstore/exceptions.h"

#include "platform/logger.h"

#include "notify/notification.h"
#include "objects/access.h"
#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/delete_config.h"
#include "persistence/write_config.h"
#include "persistence/write_values.h"
#include "store/boot_context.h"
#include "store/config_store_impl.h"
#include "store/layer_update.h"
#include "store/removals.h"
#include "store/trace.h"
#include "store/under_transaction.h"
#include "store/update.h"
#include "store/working_objects.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

// Deleting members takes more than leaving them out.
bool UpdatesNothing(const ObjectHandle& object) {
  // What is no object at all is refused with the rest of what does not fit.
  if (!Internal::Access::Of(*object).GetRoot().IsObject() || !object->IsEmpty()) {
    return false;
  }
  CSLogger::Log(CSLogger::kProblem,
                "Update called with empty object for %s, deletes are not supported",
                object->GetConfigStoreObjectId().toString().c_str());
  return true;
}

bool HoldsUserData(const SchemaHandle& schema, const ObjectHandle& object,
                   const Removals& removals) {
  return isUserType(object, schema) ||
         (removals.Kinds() & static_cast<unsigned>(Json::Kind::USER)) != 0;
}

}  // namespace

void ConfigStoreImpl::Set(std::shared_ptr<ConfigStoreObject> object,
                          const USERDATA_CONTEXT& context) {
  if (IsNull(object, "Set")) {
    return;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kWriteCall, "Set", csoId, context);
  const auto schemaCache = TarnSchemaStore::SchemaStore::GetCache();
  const SchemaHandle schema = FindSchema(schemaCache, csoId);
  ValidateCsoId(object, schema);
  WorkingObjects working;
  working.AddForSet(schema, object);
  CheckBootTimeContext(schema, object, context, connection_);
  if (ObjIsEmpty(object, "Set")) {
    working.Keep();
    return;
  }
  SetInternal(object, schemaCache, context, connection_);
  working.Keep();
  NotifyIfAllowlisted(csoId, connection_);
}

void ConfigStoreImpl::SetUserData(std::shared_ptr<ConfigStoreObject> object,
                                  const USERDATA_CONTEXT& context) {
  if (IsNull(object, "SetUserData")) {
    return;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kWriteCall, "SetUserData", csoId, context);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(object, schema);
  if (IsClosedDuringBoot(schema, connection_)) {
    checkUserContext(true, context);
  }
  WorkingObjects working;
  working.Add(schema, object);
  ValidateUserConfig(schema, object);
  if (ObjIsEmpty(object, "SetUserData")) {
    working.Keep();
    return;
  }
  // Announced before the write, unlike its siblings: so says the interface.
  NotifyIfAllowlisted(csoId, connection_);
  if (context == EXTERNAL) {
    WriteUserConfigInstances({object}, connection_, schema->IsConfirmedDuringUpgrade(), schema);
  } else {
    WriteAutoConfConfigInstances({object}, connection_, schema);
  }
  working.Keep();
}

void ConfigStoreImpl::SetPart(const std::shared_ptr<ConfigStoreObject>& object,
                              ValidateData validate, WriteValues write, const char* operation) {
  if (IsNull(object, operation)) {
    return;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kWriteCall, operation, csoId, EXTERNAL);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(object, schema);
  WorkingObjects working;
  working.Add(schema, object);
  validate(schema, object);
  if (ObjIsEmpty(object, operation)) {
    working.Keep();
    return;
  }
  write({object}, connection_, schema);
  working.Keep();
  NotifyIfAllowlisted(csoId, connection_);
}

void ConfigStoreImpl::SetVitalData(std::shared_ptr<ConfigStoreObject> object) {
  SetPart(object, ValidateVitalConfig, WriteVitalConfigInstances, "SetVitalData");
}

void ConfigStoreImpl::SetCachedData(std::shared_ptr<ConfigStoreObject> object) {
  SetPart(object, ValidateCachedConfig, WriteCachedConfigInstances, "SetCachedData");
}

void ConfigStoreImpl::Update(std::shared_ptr<ConfigStoreObject> object,
                             const USERDATA_CONTEXT& context) {
  if (IsNull(object, "Update")) {
    return;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kWriteCall, "Update", csoId, context);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(object, schema);
  if (UpdatesNothing(object)) {
    return;
  }
  const Removals removals(Internal::Access::Of(*object).GetRoot(), schema->GetSchemaPlace());
  if (IsClosedDuringBoot(schema, connection_) && HoldsUserData(schema, object, removals)) {
    checkUserContext(true, context);
  }
  WorkingObjects working;
  working.Add(schema, object, !removals.Empty());
  ValidateChange(object, removals, schema);
  // Cleaning may have left nothing.
  if (removals.Empty() && UpdatesNothing(object)) {
    working.Keep();
    return;
  }
  UpdateInternal(*this, object, removals, schema, context, connection_);
  working.Keep();
  NotifyIfAllowlisted(csoId, connection_);
}

void ConfigStoreImpl::Delete(const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kWriteCall, "Delete", csoId, EXTERNAL);
  ValidateCsoId(csoId, FindSchema(csoId));
  DeleteInternal(csoId, connection_);
  NotifyIfAllowlisted(csoId, connection_);
}

}  // namespace TarnConfigStore
