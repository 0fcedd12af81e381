#include "tarnconfigstore/dry_run.h"

#include "json/pointer.h"
#include "objects/access.h"
#include "objects/schema_lookup.h"
#include "objects/working_data.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

using ValidateData = void (*)(const SchemaHandle&, const ObjectHandle&);

ValidateData ValidationOf(WriteKind kind) {
  switch (kind) {
    case WriteKind::SET_USER_DATA:
      return ValidateUserConfig;
    case WriteKind::SET_VITAL_DATA:
      return ValidateVitalConfig;
    case WriteKind::SET_CACHED_DATA:
      return ValidateCachedConfig;
    case WriteKind::SET:
      break;
  }
  return ValidateSet;
}

}  // namespace

std::vector<ErrorInfo> FindingsOfWrite(const std::shared_ptr<ConfigStoreObject>& object,
                                       WriteKind kind) {
  std::vector<ErrorInfo> findings;
  if (!object) {
    return findings;
  }
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  const SchemaHandle schema = FindSchema(id);
  if (!ValidateIdentity(schema, id, findings)) {
    return findings;
  }
  const ObjectHandle copy = std::make_shared<ConfigStoreObject>(id);
  ConfigStoreObjectImpl& data = Internal::Access::Of(*copy);
  data.GetRoot().CopyFrom(Internal::Access::Of(*object).GetRoot(), data.GetAllocator());
  try {
    ValidateWritableInstanceId(id);
    ValidationOf(kind)(schema, copy);
  } catch (const ValidationException& refused) {
    findings = refused.GetErrors();
    if (findings.empty()) {
      findings.push_back({"/", refused.what()});
    }
    return findings;
  }
  if (copy->IsEmpty()) {
    findings.push_back({"/", "the object holds no data beside its instance id and empty members"});
  }
  return findings;
}

}  // namespace TarnConfigStore
