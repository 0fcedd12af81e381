// Writing current configuration.
#pragma once

#include "tarnconfigstore/contexts.h"

#include "platform/db_store.h"
#include "platform/schema_store.h"

#include "objects/division.h"
#include "persistence/row_objects.h"
#include "persistence/type_rows.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TarnConfigStore {

/// Revision and creation time of instances that existed before a bulk write, by instance id.
using ExistingInstances = std::map<std::string, std::pair<int, std::string>>;

/// Replaces an object's row by its data, divided among the value columns; array elements that need
/// a generated instance id get one. The object has been validated. Raises ConfigStoreException 2000
/// "WriteComplete failed"; the row is then as it was.
void SetInternal(const ObjectHandle& object, const SchemaCacheHandle& schemaCache,
                 const USERDATA_CONTEXT& context, const DBStore::ConnectionHandle& connection);

/// The same for several objects. New rows take their creation time and the base of their revision
/// from the existing instances, where they are listed there.
void SetInstancesInternal(const std::vector<ObjectHandle>& objects, const USERDATA_CONTEXT& context,
                          const SchemaCacheHandle& schemaCache,
                          const DBStore::ConnectionHandle& connection,
                          const std::optional<ExistingInstances>& existing);

/// Writes rows whole; the version is that of each type's schema at this moment.
void WriteCompleteConfigInstances(const ColumnMap& rows,
                                  const DBStore::ConnectionHandle& connection,
                                  const SchemaCacheHandle& schemaCache,
                                  const std::optional<ExistingInstances>& existing);

/// Writes a row as a document has it, all values, the pending one and the version included. A new row
/// gets the creation time, where there is one, and the number of writes; one that is there keeps its
/// own, and counts a write. Raises as SetInternal.
/// \param type  names the type; the row has the instance id
void WriteImportedRow(const ConfigStoreObjectId& type, const StoredRow& row,
                      const std::optional<std::string>& creationTime, int revision,
                      const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
