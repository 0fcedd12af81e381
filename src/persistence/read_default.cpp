#include "persistence/read_default.h"

#include "platform/logger.h"

#include "objects/filter.h"
#include "persistence/statements.h"

#include <utility>

namespace TarnConfigStore {
namespace {

ObjectHandle Found(ObjectHandle object, const ConfigStoreObjectId& id) {
  if (!object) {
    CSLogger::Log(CSLogger::kFailure, "Object not found: %s", id.toString().c_str());
  }
  return object;
}

// The rows of one instance or, without an instance id, of all instances of a type.
RowMapList ReadDefaults(const InstanceStatement& one, const TypeStatement& all,
                        const ConfigStoreObjectId& id,
                        const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement =
      id.instanceId.empty()
          ? all.PrepareAndBind(connection, id.key, id.group, id.component)
          : one.PrepareAndBind(connection, id.key, id.group, id.component, id.instanceId);
  return ReadRows(connection, statement, "Get store rows failed.");
}

// An object for each row that gives one, the row's instance id in its identifier.
template <class MakeObject>
std::vector<ObjectHandle> ObjectsOf(const RowMapList& rows, const ConfigStoreObjectId& id,
                                    MakeObject makeObject) {
  std::vector<ObjectHandle> objects;
  ConfigStoreObjectId instance = id;
  for (const std::shared_ptr<RowMap>& row : rows) {
    instance.instanceId = row->Text("Identifier");
    if (ObjectHandle object = makeObject(*row, instance)) {
      objects.push_back(std::move(object));
    }
  }
  return objects;
}

}  // namespace

ObjectHandle GetDefaultConfigInternal(const ConfigStoreObjectId& id,
                                      const DBStore::ConnectionHandle& connection,
                                      const SchemaHandle& schema) {
  return Found(MergeParts(ReadRowMap(connection, GET_DEFAULT_INSTANCE, id), "Value", id, schema),
               id);
}

ObjectHandle GetDefaultUserConfigInternal(const ConfigStoreObjectId& id,
                                          const DBStore::ConnectionHandle& connection,
                                          const SchemaHandle& schema) {
  return Found(
      MakeObjectFromRow(ReadRowMap(connection, GET_DEFAULT_INSTANCE, id), "Value", id, schema), id);
}

std::vector<ObjectHandle> GetDefaultConfigInstancesInternal(
    const std::shared_ptr<FilterSpecObject>& filter, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema) {
  const ConfigStoreObjectId& id = filter->GetConfigStoreObjectId();
  return FilterConfigStoreObjects(
      ObjectsOf(ReadDefaults(GET_DEFAULT_INSTANCE, GET_DEFAULT_INSTANCES, id, connection), id,
                [&](const RowMap& row, const ConfigStoreObjectId& instance) {
                  return MergeParts(row, "Value", instance, schema);
                }),
      filter);
}

RowMapList GetDefaultUserConfigMapList(const ConfigStoreObjectId& id,
                                       const DBStore::ConnectionHandle& connection) {
  return ReadDefaults(GET_DEFAULT_USER_INSTANCE, GET_DEFAULT_USER_INSTANCES, id, connection);
}

std::vector<ObjectHandle> GetDefaultUserConfigInstancesInternal(
    const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema) {
  return ObjectsOf(GetDefaultUserConfigMapList(id, connection), id,
                   [&](const RowMap& row, const ConfigStoreObjectId& instance) {
                     return MakeObjectFromRow(row, "Value", instance, schema);
                   });
}

}  // namespace TarnConfigStore
