#include "platform/type_files.h"

#include "schema/loaded_type.h"
#include "schema/schema_database.h"
#include "schema/schema_locks.h"
#include "schema/used_types.h"

namespace TypeFiles {

using TarnSchemaStore::SchemaDatabase;
using TarnSchemaStore::SchemaLocks;

std::shared_ptr<TarnSchemaStore::SchemaObject> Load(const KeptType& type) {
  return TarnSchemaStore::LoadedType::FromText(type.name, type.text);
}

std::vector<KeptType> ReadAll() {
  const std::lock_guard lock(SchemaLocks::Get().administration);
  return SchemaDatabase(SchemaDatabase::Access::READ).ReadAllTypes();
}

std::optional<KeptType> Read(const TarnSchemaStore::TypeName& name) {
  const std::lock_guard lock(SchemaLocks::Get().administration);
  return SchemaDatabase(SchemaDatabase::Access::READ).ReadType(name);
}

TypeWriter::TypeWriter()
    : lock_(SchemaLocks::Get().administration),
      database_(std::make_unique<SchemaDatabase>(SchemaDatabase::Access::WRITE)) {
  database_->Begin();
}

TypeWriter::~TypeWriter() = default;

std::optional<KeptType> TypeWriter::Read(const TarnSchemaStore::TypeName& name) {
  return database_->ReadType(name);
}

void TypeWriter::Put(const KeptType& type) {
  database_->WriteType(type, Load(type)->GetValueType());
}

void TypeWriter::Remove(const TarnSchemaStore::TypeName& name) {
  database_->RemoveType(name);
}

void TypeWriter::Commit() {
  database_->Commit();
  TarnSchemaStore::ForgetCurrentTypes();
}

}  // namespace TypeFiles
