#include "objects/schema_lookup.h"

#include "errors/platform_failures.h"

namespace TarnConfigStore {
namespace {

template <class Source>
SchemaHandle Find(Source& source, const ConfigStoreObjectId& id) {
  return WithStoreFailures([&] { return source.GetSchemaObject(id.component, id.group, id.key); });
}

SchemaHandle Required(SchemaHandle schema, const ConfigStoreObjectId& id) {
  if (!schema) {
    ThrowException<ConfigStoreException>(CS_SCHEMA_NOT_FOUND, id.toString());
  }
  return schema;
}

}  // namespace

SchemaHandle FindSchema(const ConfigStoreObjectId& id) {
  return Find(*TarnSchemaStore::SchemaStore::GetStore(false), id);
}

SchemaHandle FindSchema(const SchemaCacheHandle& cache, const ConfigStoreObjectId& id) {
  return Find(*cache, id);
}

SchemaHandle RequireSchema(const ConfigStoreObjectId& id) {
  return Required(FindSchema(id), id);
}

SchemaHandle RequireSchema(const SchemaCacheHandle& cache, const ConfigStoreObjectId& id) {
  return Required(FindSchema(cache, id), id);
}

}  // namespace TarnConfigStore
