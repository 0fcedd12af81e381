// Instance ids that the store gives to array elements before they are stored.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "platform/schema_store.h"

namespace TarnConfigStore {

/// Gives an id to each element of the object's data that its type wants one for and that has none.
void GiveGeneratedIds(const ConfigStoreObject& object, const TarnSchemaStore::SchemaObject& schema);

}  // namespace TarnConfigStore
