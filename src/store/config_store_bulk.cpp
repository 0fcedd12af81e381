#include "platform/logger.h"

#include "notify/notification.h"
#include "objects/schema_lookup.h"
#include "persistence/delete_config.h"
#include "persistence/read_current.h"
#include "persistence/revision.h"
#include "persistence/write_config.h"
#include "persistence/write_values.h"
#include "store/boot_context.h"
#include "store/bulk_lists.h"
#include "store/config_store_impl.h"
#include "store/trace.h"
#include "store/under_transaction.h"
#include "store/working_objects.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

#include <utility>

namespace TarnConfigStore {

void ConfigStoreImpl::DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) {
  if (IsNull(filter, "DeleteInstances")) {
    return;
  }
  const ConfigStoreObjectId& csoId = filter->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kWriteCall, "DeleteInstances", csoId, EXTERNAL);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoIdInstances(csoId, schema);
  if (filter->IsEmpty()) {
    // One statement, which needs no transaction. The interface has it announce nothing.
    if (csoId.instanceId.empty()) {
      DeleteInstancesInternal(csoId, connection_);
    } else {
      DeleteInternal(csoId, connection_);
    }
    return;
  }
  RunUnderTransaction(*this, connection_, "DeleteInstances", [&] {
    ConfigStoreObjectId instance = csoId;
    for (std::string& id : GetConfigInstanceIdsInternal(filter, connection_, schema)) {
      instance.instanceId = std::move(id);
      DeleteInternal(instance, connection_);
    }
  });
  NotifyIfAllowlisted(csoId, connection_);
}

void ConfigStoreImpl::SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects,
                                   const USERDATA_CONTEXT& context) {
  ConfigStoreObjectId type = DropEmptyHandles(objects, "SetInstances");
  LogStoreCall(CSLogger::kWriteCall, "SetInstances", type, EXTERNAL);
  type.instanceId.clear();
  const auto schemaCache = TarnSchemaStore::SchemaStore::GetCache();
  const SchemaHandle schema = FindSchema(schemaCache, type);
  ValidateCsoIdInstances(type, schema);
  const bool closed = IsClosedDuringBoot(schema, connection_);
  WorkingObjects working;
  CheckInstances(objects, type, [&](const ObjectHandle& object) {
    working.AddForSet(schema, object);
    if (closed && isUserType(object, schema)) {
      checkUserContext(true, context);
    }
  });
  DropEmptyObjects(objects, "SetInstances");
  if (objects.empty()) {
    working.Keep();
    return;
  }
  RunUnderTransaction(*this, connection_, "SetInstances", [&] {
    const ExistingInstances existing = ReadExistingInstances(type, connection_);
    DeleteInstancesInternal(type, connection_);
    SetInstancesInternal(objects, context, schemaCache, connection_, existing);
  });
  working.Keep();
  NotifyIfAllowlisted(type, connection_);
}

void ConfigStoreImpl::SetDataInstancesInternal(ObjectList objects, ValidateData validate,
                                               DeleteValues deleteExisting,
                                               WriteConfirmable writeWithFlag, WriteValues write,
                                               const SchemaHandle& schema, const char* operation) {
  const ConfigStoreObjectId first = objects.front()->GetConfigStoreObjectId();
  WorkingObjects working;
  CheckInstances(objects, first, [&](const ObjectHandle& object) {
    working.Add(schema, object);
    validate(schema, object);
  });
  DropEmptyObjects(objects, operation);
  if (objects.empty()) {
    working.Keep();
    return;
  }
  RunUnderTransaction(*this, connection_, "SetDataInstancesInternal", [&] {
    deleteExisting(first, connection_);
    if (writeWithFlag != nullptr) {
      writeWithFlag(objects, connection_, schema->IsConfirmedDuringUpgrade(), schema);
    }
    if (write != nullptr) {
      write(objects, connection_, schema);
    }
  });
  working.Keep();
  NotifyIfAllowlisted(first, connection_);
}

void ConfigStoreImpl::SetUserDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects,
                                           const USERDATA_CONTEXT& context) {
  const ConfigStoreObjectId first = DropEmptyHandles(objects, "SetUserDataInstances");
  LogStoreCall(CSLogger::kWriteCall, "SetUserDataInstances", first, EXTERNAL);
  const SchemaHandle schema = FindSchema(first);
  ValidateCsoIdInstances(first, schema);
  if (IsClosedDuringBoot(schema, connection_)) {
    checkUserContext(true, context);
  }
  if (context == EXTERNAL) {
    SetDataInstancesInternal(std::move(objects), ValidateUserConfig, DeleteUserConfigInstances,
                             WriteUserConfigInstances, nullptr, schema, "SetUserDataInstances");
  } else {
    SetDataInstancesInternal(std::move(objects), ValidateUserConfig, DeleteAutoConfConfigInstances,
                             nullptr, WriteAutoConfConfigInstances, schema, "SetUserDataInstances");
  }
}

void ConfigStoreImpl::SetPartInstances(ObjectList objects, ValidateData validate,
                                       DeleteValues deleteExisting, WriteValues write,
                                       const char* operation) {
  const ConfigStoreObjectId first = DropEmptyHandles(objects, operation);
  LogStoreCall(CSLogger::kWriteCall, operation, first, EXTERNAL);
  const SchemaHandle schema = FindSchema(first);
  ValidateCsoIdInstances(first, schema);
  SetDataInstancesInternal(std::move(objects), validate, deleteExisting, nullptr, write, schema,
                           operation);
}

void ConfigStoreImpl::SetCachedDataInstances(
    std::vector<std::shared_ptr<ConfigStoreObject>> objects) {
  SetPartInstances(std::move(objects), ValidateCachedConfig, DeleteCachedConfigInstances,
                   WriteCachedConfigInstances, "SetCachedDataInstances");
}

void ConfigStoreImpl::SetVitalDataInstances(
    std::vector<std::shared_ptr<ConfigStoreObject>> objects) {
  SetPartInstances(std::move(objects), ValidateVitalConfig, DeleteVitalConfigInstances,
                   WriteVitalConfigInstances, "SetVitalDataInstances");
}

}  // namespace TarnConfigStore
