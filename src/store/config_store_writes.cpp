#include "objects/schema_lookup.h"
#include "persistence/write_config.h"
#include "store/boot_context.h"
#include "store/config_store_impl.h"
#include "store/trace.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

constexpr int kWrite = 3;

}  // namespace

void ConfigStoreImpl::Set(std::shared_ptr<ConfigStoreObject> object,
                          const USERDATA_CONTEXT& context) {
  if (IsNull(object, "Set")) {
    return;
  }
  const ConfigStoreObjectId& csoId = object->GetConfigStoreObjectId();
  LogStoreCall(kWrite, "Set", csoId, context);
  const auto schemaCache = TarnSchemaStore::SchemaStore::GetCache();
  const SchemaHandle schema = FindSchema(schemaCache, csoId);
  ValidateCsoId(object, schema);
  ValidateSet(schema, object);
  CheckBootTimeContext(schema, object, context, connection_);
  if (ObjIsEmpty(object, "Set")) {
    return;
  }
  SetInternal(object, schemaCache, context, connection_);
}

}  // namespace TarnConfigStore
