#include "persistence/write_config.h"

#include "errors/raise.h"
#include "objects/division.h"
#include "objects/schema_lookup.h"
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

// The schema of one type after the other; rows are of the same type as a rule.
class SchemaOfRows {
 public:
  explicit SchemaOfRows(const SchemaCacheHandle& cache) : cache_(cache) {}

  /// Answers whether the type is another one than the row's before. Raises as RequireSchema.
  bool MoveTo(const ConfigStoreObjectId& id) {
    if (type_ != nullptr && IsSameType(*type_, id)) {
      return false;
    }
    schema_ = RequireSchema(cache_, id);
    type_ = &id;
    return true;
  }
  const TarnSchemaStore::SchemaObject& operator*() const { return *schema_; }

 private:
  const SchemaCacheHandle& cache_;
  SchemaHandle schema_;
  const ConfigStoreObjectId* type_ = nullptr;
};

}  // namespace

void SetInternal(const ObjectHandle& object, const SchemaCacheHandle& schemaCache,
                 const USERDATA_CONTEXT& context, const DBStore::ConnectionHandle& connection) {
  const SchemaHandle schema = RequireSchema(schemaCache, object->GetConfigStoreObjectId());
  const auto [id, values] = DivideForWriting(*object, *schema, context);
  CompleteWriter writer(connection);
  writer.SetType(*id, schema->GetVersion(), kConfirmed);
  writer.Write(id->instanceId, values, {}, 0);
}

void SetInstancesInternal(const std::vector<ObjectHandle>& objects, const USERDATA_CONTEXT& context,
                          const SchemaCacheHandle& schemaCache,
                          const DBStore::ConnectionHandle& connection,
                          const std::optional<ExistingInstances>& existing) {
  ColumnMap rows;
  rows.reserve(objects.size());
  SchemaOfRows schema(schemaCache);
  for (const ObjectHandle& object : objects) {
    schema.MoveTo(object->GetConfigStoreObjectId());
    rows.push_back(DivideForWriting(*object, *schema, context));
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
  CompleteWriter writer(connection);
  SchemaOfRows schema(schemaCache);
  std::size_t next = 0;
  for (const auto& [id, values] : rows) {
    if (schema.MoveTo(*id)) {
      writer.SetType(*id, (*schema).GetVersion(), kConfirmed);
    }
    const auto known = existing ? existing->Find(id->instanceId, next) : std::nullopt;
    writer.Write(id->instanceId, values,
                 known ? DBStore::NullableSV(known->creationTime) : DBStore::NullableSV(),
                 known ? known->revision : 0);
  }
}

void ImportedRows::Write(const ConfigStoreObjectId& type, const StoredRow& row,
                         const std::optional<std::string>& creationTime, int revision) {
  const bool isLikeTheOneBefore = type_ != nullptr && IsSameType(*type_, type) &&
                                  before_->version == row.version &&
                                  before_->confirmed == row.confirmed;
  if (!isLikeTheOneBefore) {
    writer_.SetType(type, row.version, row.confirmed ? kConfirmed : 0);
    type_ = &type;
    before_ = &row;
  }
  writer_.Write(row.instanceId, row,
                creationTime ? DBStore::NullableSV(*creationTime) : DBStore::NullableSV(),
                revision - 1);  // the statement adds one
  if (row.pending) {
    RedivideRow(type, row, connection_);
  }
}

}  // namespace TarnConfigStore
