#include "objects/generated_ids.h"

#include "platform/generated_instance_id.h"

#include "objects/config_store_object_impl.h"

namespace TarnConfigStore {

void GiveGeneratedIds(const ConfigStoreObject& object,
                      const TarnSchemaStore::SchemaObject& schema) {
  // A type whose arrays get generated ids has them in its id map.
  if (schema.GetIdMap()) {
    ConfigStoreObjectImpl& data = *object.GetImplementation();
    PopulateGeneratedInstanceId(schema.GetSchemaPlace(), data.GetRoot(), data.GetAllocator());
  }
}

}  // namespace TarnConfigStore
