#include "schema/schema_database.h"

#include "platform/host_paths.h"
#include "platform/store_error.h"

#include "db/last_error.h"
#include "schema/schema_statements.h"

#include <sqlite3.h>

#include <stdexcept>

namespace TarnSchemaStore {

// One execution of a prepared statement; its end resets the statement and drops what was bound.
class SchemaDatabase::Execution {
 public:
  Execution(SchemaDatabase& database, const char* sql)
      : database_(database), statement_(database.Prepare(sql)) {}
  Execution(const Execution&) = delete;
  Execution& operator=(const Execution&) = delete;
  ~Execution() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }

  // The text has to live until the execution ends.
  Execution& Bind(std::string_view text) {
    const int status = sqlite3_bind_text64(statement_, ++bound_, text.data(), text.size(),
                                           SQLITE_STATIC, SQLITE_UTF8);
    if (status != SQLITE_OK) {
      database_.Fail(status, "cannot bind a value");
    }
    return *this;
  }
  Execution& Bind(const TypeName& name) {
    return Bind(name.component).Bind(name.group).Bind(name.key);
  }

  bool Step() {
    const int status = sqlite3_step(statement_);
    if (status != SQLITE_ROW && status != SQLITE_DONE) {
      database_.Fail(status, "cannot run a statement");
    }
    return status == SQLITE_ROW;
  }

  std::string_view Text(int column) const {
    const unsigned char* text = sqlite3_column_text(statement_, column);
    if (text == nullptr && sqlite3_errcode(sqlite3_db_handle(statement_)) == SQLITE_NOMEM) {
      database_.Fail(SQLITE_NOMEM, "cannot read a text");
    }
    return {reinterpret_cast<const char*>(text),
            static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
  }
  std::int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }

  TypeName Name() const {
    return {std::string(Text(0)), std::string(Text(1)), std::string(Text(2))};
  }
  TypeFiles::KeptType Type() const { return {Name(), std::string(Text(3)), std::string(Text(4))}; }

 private:
  SchemaDatabase& database_;
  sqlite3_stmt* statement_;
  int bound_ = 0;
};

void SchemaDatabase::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
  sqlite3_finalize(statement);
}

SchemaDatabase::SchemaDatabase(Access access)
    : file_(DBStore::internal::OpenDatabase(DBStore::internal::SchemaStoreLayout(),
                                            access == Access::WRITE)) {
  if (!file_) {
    throw std::runtime_error("The schema store cannot be opened: " +
                             DBStore::GetLastError().message);
  }
}

SchemaDatabase::~SchemaDatabase() = default;

void SchemaDatabase::Fail(int status, const char* action) {
  sqlite3* handle = file_.handle.get();
  const int extended = sqlite3_extended_errcode(handle);
  DBStore::internal::ReportSqliteFailure(handle, extended != SQLITE_OK ? extended : status,
                                         HostPaths::kSchemaStore, file_.path, action);
  throw std::runtime_error("The schema store failed: " + DBStore::GetLastError().message);
}

sqlite3_stmt* SchemaDatabase::Prepare(const char* sql) {
  auto& kept = statements_[sql];
  if (!kept) {
    sqlite3_stmt* statement = nullptr;
    const int status = sqlite3_prepare_v2(file_.handle.get(), sql, -1, &statement, nullptr);
    if (status != SQLITE_OK) {
      Fail(status, "cannot prepare a statement");
    }
    kept.reset(statement);
  }
  return kept.get();
}

void SchemaDatabase::Run(const char* sql) {
  Execution(*this, sql).Step();
}

std::int64_t SchemaDatabase::ReadGeneration() {
  Execution execution(*this, Sql::kReadGeneration);
  return execution.Step() ? execution.Number(0) : 0;
}

std::optional<TypeFiles::KeptType> SchemaDatabase::ReadType(const TypeName& name) {
  Execution execution(*this, Sql::kReadType);
  if (!execution.Bind(name).Step()) {
    return std::nullopt;
  }
  return execution.Type();
}

std::vector<TypeFiles::KeptType> SchemaDatabase::ReadAllTypes() {
  std::vector<TypeFiles::KeptType> types;
  Execution execution(*this, Sql::kReadAllTypes);
  while (execution.Step()) {
    types.push_back(execution.Type());
  }
  return types;
}

std::vector<TypeName> SchemaDatabase::ReadAllNames() {
  std::vector<TypeName> names;
  Execution execution(*this, Sql::kReadAllNames);
  while (execution.Step()) {
    names.push_back(execution.Name());
  }
  return names;
}

void SchemaDatabase::Begin() {
  Prepare(Sql::kCommit);
  Run(Sql::kBegin);
}

void SchemaDatabase::WriteType(const TypeFiles::KeptType& type, std::string_view valueType) {
  Execution execution(*this, Sql::kWriteType);
  execution.Bind(type.name).Bind(type.version).Bind(valueType).Bind(type.text).Step();
}

void SchemaDatabase::RemoveType(const TypeName& name) {
  Execution(*this, Sql::kRemoveType).Bind(name).Step();
}

void SchemaDatabase::Commit() {
  Run(Sql::kCommit);
}

}  // namespace TarnSchemaStore
