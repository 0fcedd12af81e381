#include "persistence/write_config.h"

#include "errors/raise.h"
#include "objects/division.h"
#include "objects/schema_lookup.h"
#include "persistence/binder.h"
#include "persistence/statements.h"

#include <algorithm>

namespace TarnConfigStore {
namespace {

constexpr int kConfirmed = 1;

ColumnMapEntry DivideForWriting(const ConfigStoreObject& object,
                                const TarnSchemaStore::SchemaObject& schema,
                                const USERDATA_CONTEXT& context) {
  GiveGeneratedIds(object, schema);
  return DivideObject(object, schema, context);
}

void WriteComplete(const ConfigStoreObjectId& type, const std::string& instanceId,
                   const std::string& version, int success, const ColumnValues& values,
                   DBStore::NullableSV creationTime, int revisionBase,
                   const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, WRITE_COMPLETE, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(instanceId, type.key, type.group, type.component, version)
           .Number(success)
           .Nullable(values.automatic, values.user, values.vital, values.cached, creationTime)
           .Number(revisionBase)
           .Execute()) {
    ThrowFailure("WriteComplete failed");
  }
}

void WriteRow(const ColumnMapEntry& row, const std::string& version,
              const ExistingInstances::mapped_type* existing,
              const DBStore::ConnectionHandle& connection) {
  WriteComplete(*row.id, row.id->instanceId, version, kConfirmed, row.values,
                existing == nullptr ? DBStore::NullableSV() : DBStore::NullableSV(existing->second),
                existing == nullptr ? 0 : existing->first, connection);
}

}  // namespace

void SetInternal(const ObjectHandle& object, const SchemaCacheHandle& schemaCache,
                 const USERDATA_CONTEXT& context, const DBStore::ConnectionHandle& connection) {
  const SchemaHandle schema = RequireSchema(schemaCache, object->GetConfigStoreObjectId());
  WriteRow(DivideForWriting(*object, *schema, context), schema->GetVersion(), nullptr, connection);
}

void SetInstancesInternal(const std::vector<ObjectHandle>& objects, const USERDATA_CONTEXT& context,
                          const SchemaCacheHandle& schemaCache,
                          const DBStore::ConnectionHandle& connection,
                          const std::optional<ExistingInstances>& existing) {
  ColumnMap rows;
  rows.reserve(objects.size());
  for (const ObjectHandle& object : objects) {
    rows.push_back(DivideForWriting(
        *object, *RequireSchema(schemaCache, object->GetConfigStoreObjectId()), context));
  }
  // New rows lie in the order in which they are written, and are read in that of their ids.
  const auto isBefore = [](const ColumnMapEntry& a, const ColumnMapEntry& b) {
    return a.id->instanceId < b.id->instanceId;
  };
  if (!std::is_sorted(rows.begin(), rows.end(), isBefore)) {
    std::sort(rows.begin(), rows.end(), isBefore);
  }
  WriteCompleteConfigInstances(rows, connection, schemaCache, existing);
}

void WriteCompleteConfigInstances(const ColumnMap& rows,
                                  const DBStore::ConnectionHandle& connection,
                                  const SchemaCacheHandle& schemaCache,
                                  const std::optional<ExistingInstances>& existing) {
  for (const ColumnMapEntry& row : rows) {
    const ExistingInstances::mapped_type* known = nullptr;
    if (existing) {
      const auto found = existing->find(row.id->instanceId);
      known = found == existing->end() ? nullptr : &found->second;
    }
    WriteRow(row, RequireSchema(schemaCache, *row.id)->GetVersion(), known, connection);
  }
}

void WriteImportedRow(const ConfigStoreObjectId& type, const StoredRow& row,
                      const std::optional<std::string>& creationTime, int revision,
                      const DBStore::ConnectionHandle& connection) {
  WriteComplete(type, row.instanceId, row.version, row.confirmed ? kConfirmed : 0, row,
                creationTime ? DBStore::NullableSV(*creationTime) : DBStore::NullableSV(),
                revision - 1,  // the statement adds one
                connection);
  if (row.pending) {
    RedivideRow(type, row, connection);
  }
}

}  // namespace TarnConfigStore
