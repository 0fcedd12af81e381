// Which type an identifier names, and finding its schema object.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "objects/handles.h"

namespace TarnConfigStore {

/// Key, component and group are the same; instance ids do not matter.
inline bool IsSameType(const ConfigStoreObjectId& a, const ConfigStoreObjectId& b) {
  return a.key == b.key && a.component == b.component && a.group == b.group;
}

/// The schema object of an identifier's type, from the schema store; empty when the type is not
/// installed. Raises ConfigStoreException 2000 when the schema store cannot be read.
SchemaHandle FindSchema(const ConfigStoreObjectId& id);

/// The same, from a cache that the caller holds.
SchemaHandle FindSchema(const SchemaCacheHandle& cache, const ConfigStoreObjectId& id);

/// The same, but a type that is not installed raises ConfigStoreException 1037 with the
/// identifier's text.
SchemaHandle RequireSchema(const ConfigStoreObjectId& id);
SchemaHandle RequireSchema(const SchemaCacheHandle& cache, const ConfigStoreObjectId& id);

}  // namespace TarnConfigStore
