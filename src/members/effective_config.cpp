#include "tarnconfigstore/explain.h"

#include "platform/logger.h"

#include "members/defaults.h"
#include "objects/access.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/read_current.h"
#include "store/trace.h"
#include "validation/guards.h"

namespace TarnConfigStore {

EffectiveConfig GetEffectiveConfig(const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "GetEffectiveConfig", csoId, EXTERNAL);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(csoId, schema);
  EffectiveConfig config;
  config.object = GetInternal(csoId, GetDBStore(DBStore::Type::CURRENT_STORE, true), schema);
  config.isStored = config.object != nullptr;
  if (!config.isStored) {
    config.object = std::make_shared<ConfigStoreObject>(csoId);
  }
  ConfigStoreObjectImpl& data = Internal::Access::Of(*config.object);
  config.hasDefaults = FillDefaults(data.GetRoot(), schema->GetSchemaPlace(), data.GetAllocator());
  return config;
}

}  // namespace TarnConfigStore
