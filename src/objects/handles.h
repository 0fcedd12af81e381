// The handles that operations pass on.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/filter_spec_object.h"

#include "platform/schema_store.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

using ObjectHandle = std::shared_ptr<ConfigStoreObject>;
using ObjectList = std::vector<ObjectHandle>;
using FilterHandle = std::shared_ptr<FilterSpecObject>;
using SchemaHandle = std::shared_ptr<TarnSchemaStore::SchemaObject>;
using SchemaCacheHandle = std::shared_ptr<TarnSchemaStore::SchemaObjectCache>;

}  // namespace TarnConfigStore
