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

}  // namespace

std::shared_ptr<TarnSchemaStore::SchemaObject> FindSchema(const ConfigStoreObjectId& id) {
  return Find(*TarnSchemaStore::SchemaStore::GetStore(false), id);
}

std::shared_ptr<TarnSchemaStore::SchemaObject> FindSchema(
    const std::shared_ptr<TarnSchemaStore::SchemaObjectCache>& cache,
    const ConfigStoreObjectId& id) {
  return Find(*cache, id);
}

}  // namespace TarnConfigStore
