#include "platform/process_locks.h"
#include "platform/type_files.h"

#include "schema/loaded_type.h"
#include "schema/schema_database.h"
#include "schema/used_types.h"

namespace TypeFiles {

using ProcessLocks::Guard;
using ProcessLocks::Rank;
using TarnSchemaStore::SchemaDatabase;

std::shared_ptr<TarnSchemaStore::SchemaObject> Load(const KeptType& type) {
  return TarnSchemaStore::LoadedType::FromText(type.name, type.text);
}

std::vector<KeptType> ReadAll() {
  const Guard guard(Rank::SCHEMA_ADMINISTRATION);
  return SchemaDatabase(SchemaDatabase::Access::READ).ReadAllTypes();
}

std::optional<KeptType> Read(const TarnSchemaStore::TypeName& name) {
  const Guard guard(Rank::SCHEMA_ADMINISTRATION);
  return SchemaDatabase(SchemaDatabase::Access::READ).ReadType(name);
}

struct TypeWriter::State {
  const Guard guard{Rank::SCHEMA_ADMINISTRATION};
  SchemaDatabase database{SchemaDatabase::Access::WRITE};
};

TypeWriter::TypeWriter() : state_(std::make_unique<State>()) {
  state_->database.Begin();
}

TypeWriter::~TypeWriter() = default;

std::optional<KeptType> TypeWriter::Read(const TarnSchemaStore::TypeName& name) {
  return state_->database.ReadType(name);
}

void TypeWriter::Put(const KeptType& type) {
  state_->database.WriteType(type, Load(type)->GetValueType());
}

void TypeWriter::Remove(const TarnSchemaStore::TypeName& name) {
  state_->database.RemoveType(name);
}

void TypeWriter::Commit() {
  state_->database.Commit();
  TarnSchemaStore::ForgetCurrentTypes();
}

}  // namespace TypeFiles
