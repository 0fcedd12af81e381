#include "persistence/write_config.h"

#include "errors/raise.h"
#include "objects/division.h"
#include "objects/schema_lookup.h"
#include "persistence/binder.h"
#include "persistence/statements.h"

namespace TarnConfigStore {
namespace {

constexpr int kConfirmed = 1;

ColumnMapEntry DivideForWriting(const ConfigStoreObject& object,
                                const TarnSchemaStore::SchemaObject& schema,
                                const USERDATA_CONTEXT& context) {
  GiveGeneratedIds(object, schema);
  return DivideObject(object, schema, context);
}

void WriteRow(const ColumnMapEntry& row, const std::string& version,
              const ExistingInstances::mapped_type* existing,
              const DBStore::ConnectionHandle& connection) {
  const ConfigStoreObjectId& id = *row.id;
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, WRITE_COMPLETE, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(id.instanceId, id.key, id.group, id.component, version)
           .Number(kConfirmed)
           .Nullable(row.values.automatic, row.values.user, row.values.vital, row.values.cached)
           .Nullable(existing == nullptr ? DBStore::NullableSV() : existing->second)
           .Number(existing == nullptr ? 0 : existing->first)
           .Execute()) {
    ThrowFailure("WriteComplete failed");
  }
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

}  // namespace TarnConfigStore
