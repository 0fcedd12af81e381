#include "persistence/write_config.h"

#include "platform/generated_instance_id.h"

#include "errors/raise.h"
#include "objects/config_store_object_impl.h"
#include "objects/schema_lookup.h"
#include "persistence/statements.h"

#include <string_view>

namespace TarnConfigStore {
namespace {

constexpr int kConfirmed = 1;

SchemaHandle SchemaOf(const SchemaCacheHandle& cache, const ConfigStoreObjectId& id) {
  SchemaHandle schema = FindSchema(cache, id);
  if (!schema) {
    ThrowException<ConfigStoreException>(CS_SCHEMA_NOT_FOUND, id.toString());
  }
  return schema;
}

ColumnMapEntry DivideForWriting(const ConfigStoreObject& object,
                                const TarnSchemaStore::SchemaObject& schema,
                                const USERDATA_CONTEXT& context) {
  ConfigStoreObjectImpl& data = *object.GetImplementation();
  // A type whose arrays get generated ids has them in its id map.
  if (schema.GetIdMap()) {
    PopulateGeneratedInstanceId(schema.GetSchemaDocument(), data.GetRoot(), data.GetAllocator());
  }
  return DivideObject(object, schema, context);
}

DBStore::NullableSV Nullable(const std::optional<std::string>& text) {
  return text ? DBStore::NullableSV(*text) : DBStore::NullableSV();
}

// Binds parameter after parameter and remembers whether one could not be bound.
class Binder {
 public:
  Binder(const DBStore::ConnectionHandle& connection, const DBStore::StatementHandle& statement)
      : connection_(connection), statement_(statement) {}

  Binder& Text(std::string_view text) {
    failed_ |= DBStore::internal::Bind(connection_, statement_, index_, text, false) != 0;
    return *this;
  }
  Binder& Number(int value) {
    failed_ |= DBStore::internal::Bind(connection_, statement_, index_, value) != 0;
    return *this;
  }
  Binder& Nullable(DBStore::NullableSV value) {
    failed_ |= DBStore::internal::Bind(connection_, statement_, index_, value) != 0;
    return *this;
  }
  bool Failed() const { return failed_; }

 private:
  const DBStore::ConnectionHandle& connection_;
  const DBStore::StatementHandle& statement_;
  int index_ = 1;
  bool failed_ = false;
};

void WriteRow(const ColumnMapEntry& row, const std::string& version,
              const ExistingInstances::mapped_type* existing,
              const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, WRITE_COMPLETE, DBStore::kWaitLimit);
  Binder binder(connection, statement);
  binder.Text(row.id->instanceId).Text(row.id->key).Text(row.id->group).Text(row.id->component);
  binder.Text(version).Number(kConfirmed);
  binder.Nullable(Nullable(row.values.automatic)).Nullable(Nullable(row.values.user));
  binder.Nullable(Nullable(row.values.vital)).Nullable(Nullable(row.values.cached));
  binder.Nullable(existing == nullptr ? DBStore::NullableSV() : existing->second);
  binder.Number(existing == nullptr ? 0 : existing->first);
  if (binder.Failed() ||
      DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, DBStore::kWaitLimit) != 0) {
    ThrowFailure("WriteComplete failed");
  }
}

}  // namespace

void SetInternal(const ObjectHandle& object, const SchemaCacheHandle& schemaCache,
                 const USERDATA_CONTEXT& context, const DBStore::ConnectionHandle& connection) {
  const SchemaHandle schema = SchemaOf(schemaCache, object->GetConfigStoreObjectId());
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
        *object, *SchemaOf(schemaCache, object->GetConfigStoreObjectId()), context));
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
    WriteRow(row, SchemaOf(schemaCache, *row.id)->GetVersion(), known, connection);
  }
}

}  // namespace TarnConfigStore
