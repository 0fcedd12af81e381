#include "platform/logger.h"

#include "objects/schema_lookup.h"
#include "persistence/read_current.h"
#include "persistence/read_default.h"
#include "persistence/revision.h"
#include "store/config_store_impl.h"
#include "store/trace.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {

std::shared_ptr<ConfigStoreObject> ConfigStoreImpl::Get(const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "Get", csoId, EXTERNAL);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(csoId, schema);
  return GetInternal(csoId, connection_, schema);
}

std::shared_ptr<ConfigStoreObject> ConfigStoreImpl::GetDefaultConfig(
    const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "GetDefaultConfig", csoId, EXTERNAL);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(csoId, schema);
  return GetDefaultConfigInternal(csoId, connection_, schema);
}

std::vector<std::shared_ptr<ConfigStoreObject>> ConfigStoreImpl::GetDefaultConfigInstances(
    const std::shared_ptr<FilterSpecObject>& filter) {
  if (IsNull(filter, "GetDefaultConfigInstances")) {
    return {};
  }
  const ConfigStoreObjectId& id = filter->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kTrace, "GetDefaultConfigInstances", id, EXTERNAL);
  const SchemaHandle schema = FindSchema(id);
  ValidateCsoIdInstances(filter, schema);
  return GetDefaultConfigInstancesInternal(filter, connection_, schema);
}

std::vector<std::shared_ptr<ConfigStoreObject>> ConfigStoreImpl::GetInstances(
    const std::shared_ptr<FilterSpecObject>& filter) {
  if (IsNull(filter, "GetInstances")) {
    return {};
  }
  const ConfigStoreObjectId& id = filter->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kTrace, "GetInstances", id, EXTERNAL);
  const SchemaHandle schema = FindSchema(id);
  ValidateCsoIdInstances(filter, schema);
  return GetConfigInstancesInternal(filter, connection_, schema);
}

std::int32_t ConfigStoreImpl::GetRevision(const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "GetRevision", csoId, EXTERNAL);
  ValidateCsoId(csoId, FindSchema(csoId));
  return GetRevisionInternal(csoId, connection_);
}

std::list<std::string> ConfigStoreImpl::GetInstanceIds(const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "GetInstanceIds", csoId, EXTERNAL);
  ValidateCsoIdInstances(csoId, FindSchema(csoId));
  return GetInstanceIdsInternal(csoId, connection_);
}

std::list<std::pair<std::string, std::int32_t>> ConfigStoreImpl::GetInstancesRevision(
    const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "GetInstancesRevision", csoId, EXTERNAL);
  ValidateCsoIdInstances(csoId, FindSchema(csoId));
  return GetInstancesRevisionInternal(csoId, connection_);
}

std::vector<ErrorInfo> ConfigStoreImpl::Validate(std::shared_ptr<ConfigStoreObject> object) {
  std::vector<ErrorInfo> errors;
  if (IsNull(object, "Validate")) {
    return errors;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  LogStoreCall(CSLogger::kWriteCall, "Validate", csoId, EXTERNAL);
  ValidateCSO(FindSchema(csoId), object, errors);
  return errors;
}

}  // namespace TarnConfigStore
