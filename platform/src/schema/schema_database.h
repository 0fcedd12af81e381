// The schema store's database, opened for one purpose and closed again.
#pragma once

#include "platform/type_files.h"

#include "db/database_file.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

struct sqlite3_stmt;

namespace TarnSchemaStore {

/// An open schema store, for one thread. Everything raises std::runtime_error when the database
/// refuses, with the last store error set. Nobody keeps one for longer than an operation: an open
/// database would not survive a fork, and types are read once each.
class SchemaDatabase {
 public:
  enum class Access { READ, WRITE };

  explicit SchemaDatabase(Access access);
  SchemaDatabase(const SchemaDatabase&) = delete;
  SchemaDatabase& operator=(const SchemaDatabase&) = delete;
  ~SchemaDatabase();

  /// A number that differs after every change of a type.
  std::int64_t ReadGeneration();
  std::optional<TypeFiles::KeptType> ReadType(const TypeName& name);
  std::vector<TypeFiles::KeptType> ReadAllTypes();
  std::vector<TypeName> ReadAllNames();

  /// Closing the database without a Commit undoes what was written since.
  void Begin();
  void WriteType(const TypeFiles::KeptType& type, std::string_view valueType);
  void RemoveType(const TypeName& name);
  void Commit();

 private:
  class Execution;

  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const noexcept;
  };

  sqlite3_stmt* Prepare(const char* sql);
  void Run(const char* sql);
  [[noreturn]] void Fail(int status, const char* action);

  DBStore::internal::DatabaseFile file_;
  // By the address of the named constant.
  std::map<const char*, std::unique_ptr<sqlite3_stmt, Finalizer>> statements_;
};

}  // namespace TarnSchemaStore
