#include "objects/schema_lookup.h"

#include "errors/raise.h"

#include <stdexcept>

namespace TarnConfigStore {
namespace {

template <class Source>
std::shared_ptr<TarnSchemaStore::SchemaObject> Find(Source& source, const ConfigStoreObjectId& id) {
  try {
    return source.GetSchemaObject(id.component, id.group, id.key);
  } catch (const std::runtime_error& failure) {
    // The platform knows nothing of the library's exceptions.
    ThrowFailure(failure.what());
  }
}

std::shared_ptr<TarnSchemaStore::SchemaObject> Required(
    std::shared_ptr<TarnSchemaStore::SchemaObject> schema, const ConfigStoreObjectId& id) {
  if (!schema) {
    ThrowException<ConfigStoreException>(CS_SCHEMA_NOT_FOUND, id.toString());
  }
  return schema;
}

}  // namespace

std::shared_ptr<TarnSchemaStore::SchemaObject> FindSchema(const ConfigStoreObjectId& id) {
  return Find(*TarnSchemaStore::SchemaStore::GetStore(false), id);
}

std::shared_ptr<TarnSchemaStore::SchemaObject> FindSchema(
    const std::shared_ptr<TarnSchemaStore::SchemaObjectCache>& cache,
    const ConfigStoreObjectId& id) {
  return Find(*cache, id);
}

std::shared_ptr<TarnSchemaStore::SchemaObject> RequireSchema(const ConfigStoreObjectId& id) {
  return Required(FindSchema(id), id);
}

std::shared_ptr<TarnSchemaStore::SchemaObject> RequireSchema(
    const std::shared_ptr<TarnSchemaStore::SchemaObjectCache>& cache,
    const ConfigStoreObjectId& id) {
  return Required(FindSchema(cache, id), id);
}

}  // namespace TarnConfigStore
