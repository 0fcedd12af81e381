// Writing current configuration.
#pragma once

#include "tarnconfigstore/contexts.h"

#include "platform/db_store.h"
#include "platform/schema_store.h"

#include "objects/division.h"
#include "persistence/complete_writer.h"
#include "persistence/existing_instances.h"
#include "persistence/row_objects.h"
#include "persistence/type_rows.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

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

/// Writes rows as a document has them, all values, the pending one and the version included.
class ImportedRows {
 public:
  explicit ImportedRows(const DBStore::ConnectionHandle& connection)
      : connection_(connection), writer_(connection) {}

  /// A new row gets the creation time, where there is one, and the number of writes; one that is there
  /// keeps its own, and counts a write. Raises as SetInternal.
  /// \param type  names the type; the row has the instance id. Both have to outlive this
  void Write(const ConfigStoreObjectId& type, const StoredRow& row,
             const std::optional<std::string>& creationTime, int revision);

 private:
  const DBStore::ConnectionHandle& connection_;
  CompleteWriter writer_;
  // What is bound.
  const ConfigStoreObjectId* type_ = nullptr;
  const StoredRow* before_ = nullptr;
};

}  // namespace TarnConfigStore
