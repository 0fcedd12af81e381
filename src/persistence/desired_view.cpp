#include "persistence/desired_view.h"

#include "persistence/boot_statements.h"
#include "persistence/read_current.h"

namespace TarnConfigStore {

ObjectHandle GetDesiredInternal(const ConfigStoreObjectId& id,
                                const DBStore::ConnectionHandle& connection,
                                const SchemaHandle& schema, FLAG flag) {
  if (flag == DESIRED_WITH_VITAL_AND_CACHED) {
    return MergeParts(ReadRowMap(connection, READ_DESIRED_ALL_PARTS, id), "Value", id, schema);
  }
  return MakeObjectFromRow(ReadRowMap(connection, READ_DESIRED_USER, id), "Value", id, schema);
}

std::vector<ObjectHandle> GetDesiredUserConfigInstancesInternal(
    const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema, FLAG flag) {
  const bool allParts = flag == DESIRED_WITH_VITAL_AND_CACHED;
  const TypeStatement& statement =
      allParts ? READ_DESIRED_INSTANCES_ALL_PARTS : READ_DESIRED_INSTANCES_USER;
  return ObjectsOfType(connection, statement.Text(), id,
                       [&](const RowMap& row, const ConfigStoreObjectId& instance) {
                         return allParts ? MergeParts(row, "Value", instance, schema)
                                         : MakeObjectFromRow(row, "Value", instance, schema);
                       });
}

RowMapList GetDesiredUserConfigContents(const DBStore::ConnectionHandle& connection) {
  return GetStoreContentsInternalST(DESIRED_VALUE, connection, true);
}

}  // namespace TarnConfigStore
