#include "platform/type_files.h"

#include "schema/annotations.h"
#include "schema/schema_database.h"

namespace TypeFiles {

using TarnSchemaStore::SchemaDatabase;

std::vector<KeptType> ReadAll() {
  return SchemaDatabase(SchemaDatabase::Access::READ).ReadAllTypes();
}

std::optional<KeptType> Read(const TarnSchemaStore::TypeName& name) {
  return SchemaDatabase(SchemaDatabase::Access::READ).ReadType(name);
}

TypeWriter::TypeWriter()
    : database_(std::make_unique<SchemaDatabase>(SchemaDatabase::Access::WRITE)) {
  database_->Begin();
}

TypeWriter::~TypeWriter() = default;

std::optional<KeptType> TypeWriter::Read(const TarnSchemaStore::TypeName& name) {
  return database_->ReadType(name);
}

void TypeWriter::Put(const TypeFile& file) {
  const bool shared = Json::IsTrue(*file.schema, TarnSchemaStore::Keyword::kShared);
  database_->WriteType({file.name, file.version, file.text},
                       TarnSchemaStore::ValueTypeText(shared));
}

void TypeWriter::Remove(const TarnSchemaStore::TypeName& name) {
  database_->RemoveType(name);
}

void TypeWriter::Commit() {
  database_->Commit();
}

}  // namespace TypeFiles
