#include "floor_database.h"

#include "platform/db_store.h"

#include <sqlite3.h>

#include <stdexcept>

namespace Benchmarks {
namespace {

[[noreturn]] void Fail(sqlite3* database) {
  throw std::runtime_error(std::string("floor: ") +
                           (database == nullptr ? "out of memory" : sqlite3_errmsg(database)));
}

void Check(int code, sqlite3* database) {
  if (code != SQLITE_OK) {
    Fail(database);
  }
}

}  // namespace

FloorDatabase::FloorDatabase(const std::string& path, Access access, std::int64_t applicationId,
                             std::int64_t layout) {
  const int mode = access == Access::WRITE ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(
      path.c_str(), &database,
      mode | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE, nullptr);
  database_.reset(database);
  Check(code, database);
  int keepLog = 1;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_PERSIST_WAL, &keepLog);
  Check(sqlite3_busy_timeout(database, DBStore::kWaitLimit), database);
  Check(sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr), database);
  Check(sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr), database);
  Run("PRAGMA synchronous=FULL; PRAGMA journal_size_limit=4194304;");
  if (ReadNumber("PRAGMA application_id") != applicationId ||
      ReadNumber("PRAGMA user_version") != layout) {
    throw std::runtime_error("floor: another layout than expected: " + path);
  }
}

void FloorDatabase::Run(const char* sql) {
  Check(sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr), database_.get());
}

bool FloorDatabase::IsInTransaction() const noexcept {
  return sqlite3_get_autocommit(database_.get()) == 0;
}

std::int64_t FloorDatabase::ReadNumber(const char* sql) {
  FloorStatement statement(*this, sql);
  return statement.Step() ? statement.Number(0) : 0;
}

void FloorDatabase::Closer::operator()(sqlite3* database) const noexcept {
  sqlite3_close_v2(database);
}

sqlite3_stmt* FloorStatement::Prepare() {
  sqlite3* const database = database_.database_.get();
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v3(database, sql_.data(), static_cast<int>(sql_.size()),
                                      SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  statement_.reset(statement);
  Check(code, database);
  return statement;
}

void FloorStatement::Bind(int index, std::string_view text) {
  Check(
      sqlite3_bind_text64(Prepared(), index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8),
      database_.database_.get());
}

void FloorStatement::Bind(int index, int number) {
  Check(sqlite3_bind_int(Prepared(), index, number), database_.database_.get());
}

void FloorStatement::BindNull(int index) {
  Check(sqlite3_bind_null(Prepared(), index), database_.database_.get());
}

bool FloorStatement::Step() {
  const int code = sqlite3_step(Prepared());
  if (code != SQLITE_ROW && code != SQLITE_DONE) {
    Fail(database_.database_.get());
  }
  return code == SQLITE_ROW;
}

void FloorStatement::Execute() {
  const int code = sqlite3_step(Prepared());
  if (code != SQLITE_DONE) {
    sqlite3_reset(statement_.get());
    Fail(database_.database_.get());
  }
  sqlite3_reset(statement_.get());
}

void FloorStatement::Reset() noexcept {
  sqlite3_reset(statement_.get());
}

void FloorStatement::Clear() noexcept {
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
}

bool FloorStatement::IsNull(int column) const noexcept {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::string_view FloorStatement::Text(int column) const noexcept {
  const unsigned char* text = sqlite3_column_text(statement_.get(), column);
  if (text == nullptr) {
    return {};
  }
  return {reinterpret_cast<const char*>(text),
          static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

std::int64_t FloorStatement::Number(int column) const noexcept {
  return sqlite3_column_int64(statement_.get(), column);
}

void FloorStatement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
  sqlite3_finalize(statement);
}

}  // namespace Benchmarks
