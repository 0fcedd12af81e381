// Statements and key/value entries. A statement is prepared anew for each user, and its rows are
// collected before anybody gets one.
#include "platform/held_rows.h"

#include "store.h"

#include <optional>
#include <vector>

namespace DBStore {
namespace {

using testing::Operation;
using Row = std::vector<std::optional<std::string>>;

Row RowOf(sqlite3_stmt* statement) {
  Row row;
  for (int column = 0; column < sqlite3_column_count(statement); ++column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    row.push_back(text == nullptr ? std::nullopt : std::optional(std::string(text, length)));
  }
  return row;
}

StatementHandle PrepareUnasked(const ConnectionHandle& connection, std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  const auto prepare = [&] {
    const char* rest = nullptr;
    const int status = sqlite3_prepare_v2(connection->database, sql.data(),
                                          static_cast<int>(sql.size()), &statement, &rest);
    internal::CountPrepare();
    const std::string_view more(rest, static_cast<std::size_t>(sql.data() + sql.size() - rest));
    if (statement != nullptr && more.find_first_not_of(" \t\n;") == std::string_view::npos) {
      return SQLITE_OK;
    }
    sqlite3_finalize(statement);
    return connection->Fail(status == SQLITE_OK ? SQLITE_MISUSE : status,
                            "preparing \"" + std::string(sql) + "\", one statement");
  };
  return internal::InTurn(*connection, StoreConnection::READ, kWaitLimit, prepare) == SQLITE_OK
             ? StatementHandle(statement, SqliteStmtDeleter{connection, nullptr})
             : internal::NoStatement();
}

// The engine's own status, and all rows.
int Execute(StoreConnection& connection, sqlite3_stmt* statement, int limit,
            std::vector<Row>& rows) {
  const bool reads = sqlite3_stmt_readonly(statement) != 0;
  const auto access = reads ? StoreConnection::READ : StoreConnection::WRITE;
  return internal::InTurn(connection, access, limit, [&] {
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_reset)> running(statement, sqlite3_reset);
    int status = SQLITE_OK;
    while ((status = sqlite3_step(statement)) == SQLITE_ROW) {
      rows.push_back(RowOf(statement));
    }
    if (status != SQLITE_DONE) {
      return connection.Fail(sqlite3_extended_errcode(connection.database), sqlite3_sql(statement));
    }
    if (!connection.InOrder()) {
      return internal::Fail(SQLITE_MISUSE, "transactions are not begun or ended by statements");
    }
    return reads ? SQLITE_OK : connection.Publish();
  });
}

// Ends one of the Bind functions. On no statement, the engine's own answer that they are misused.
int Bound(const StatementHandle& statement, int& index, int status) {
  if (!statement && statement.get_deleter().failed) {
    return SQLITE_MISUSE;
  }
  if (status != SQLITE_OK) {
    return internal::Fail(
        status,
        "binding a parameter of " + std::string(statement ? sqlite3_sql(statement.get()) : "none"));
  }
  ++index;
  return SQLITE_OK;
}

int RunOnEntries(const ConnectionHandle& connection, Operation operation, std::string_view sql,
                 const std::vector<std::string>& texts, std::vector<Row>& rows) {
  if (const int refused = internal::Refuse(connection, operation, texts[0])) {
    return refused;
  }
  const StatementHandle statement = PrepareUnasked(connection, sql);
  if (!statement) {
    return GetLastError().code;
  }
  int index = 1;
  for (const std::string& text : texts) {
    internal::Bind(connection, statement, index, text, false);
  }
  return Execute(*connection, statement.get(), kWaitLimit, rows);
}

}  // namespace

void SqliteStmtDeleter::operator()(sqlite3_stmt* statement) const noexcept {
  const ConnectionHandle owner = std::move(connection);
  const std::lock_guard guard(owner->store.lock);
  sqlite3_finalize(statement);
}

int ExecuteStmt(const ConnectionHandle& connection, const StatementHandle& statement,
                RowCallback callback, void* context, int limit) {
  if (!statement && statement.get_deleter().failed) {
    return SQLITE_ERROR;
  }
  if (!connection || !statement || statement.get_deleter().connection != connection) {
    internal::Fail(SQLITE_MISUSE, "there is no statement, or it is another connection's");
    return SQLITE_ERROR;
  }
  sqlite3_stmt* const engines = statement.get();
  if (const int refused = internal::Refuse(connection, Operation::EXECUTE, sqlite3_sql(engines))) {
    return refused;
  }
  std::vector<Row> rows;
  if (Execute(*connection, engines, limit, rows) != SQLITE_OK) {
    return SQLITE_ERROR;
  }
  for (Row& row : rows) {
    std::vector<char*> values;
    std::vector<char*> names;
    for (auto& text : row) {
      const int column = static_cast<int>(names.size());
      names.push_back(const_cast<char*>(sqlite3_column_name(engines, column)));
      values.push_back(text ? text->data() : nullptr);
    }
    if (callback != nullptr &&
        callback(context, static_cast<int>(row.size()), values.data(), names.data()) != 0) {
      internal::Fail(SQLITE_ABORT, "the receiver of the rows stopped the statement");
      return SQLITE_ERROR;
    }
  }
  return SQLITE_OK;
}

int ReadKeyValue(const std::string& key, std::string* value, const ConnectionHandle& connection) {
  std::vector<Row> rows;
  const int status = RunOnEntries(connection, Operation::READ_KEY_VALUE,
                                  "SELECT Value FROM KeyValue WHERE Key = ?", {key}, rows);
  if (status == SQLITE_OK) {
    *value = rows.empty() ? std::string() : rows.at(0).at(0).value_or("");
  }
  return status;
}

int WriteKeyValue(const std::string& key, const std::string& value,
                  const ConnectionHandle& connection) {
  std::vector<Row> none;
  return RunOnEntries(connection, Operation::WRITE_KEY_VALUE,
                      "INSERT OR REPLACE INTO KeyValue VALUES(?, ?)", {key, value}, none);
}

StatementHandle internal::Prepare(const ConnectionHandle& connection, std::string_view sql,
                                  int /*limit*/) {
  return Refuse(connection, Operation::PREPARE, sql) == 0 ? PrepareUnasked(connection, sql)
                                                          : NoStatement();
}

int internal::Bind(const ConnectionHandle&, const StatementHandle& statement, int& index,
                   int value) {
  return Bound(statement, index, sqlite3_bind_int(statement.get(), index, value));
}

int internal::Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
                   std::string_view text, bool /*flag*/) {
  return Bind(connection, statement, index, NullableSV(text));
}

int internal::Bind(const ConnectionHandle&, const StatementHandle& statement, int& index,
                   NullableSV value) {
  // A text of no length may have no address, which SQLite would take for NULL, too.
  const std::string_view text = value.Text();
  const char* const address = value.IsNull() ? nullptr : text.empty() ? "" : text.data();
  return Bound(statement, index,
               sqlite3_bind_text64(statement.get(), index, address, text.size(), SQLITE_STATIC,
                                   SQLITE_UTF8));
}

// Nothing is held: a connection looks at a copy of the store, which is made anew for each read.
void SetRowHolding(bool /*hold*/) noexcept {}

MadeOfRow FindHeld(const ConnectionHandle& /*connection*/, const RowQuery& /*query*/) noexcept {
  return nullptr;
}

bool IsWorthHolding(const ConnectionHandle& /*connection*/, const RowQuery& /*query*/) noexcept {
  return false;
}

void Hold(const ConnectionHandle& /*connection*/, const RowQuery& /*query*/, MadeOfRow /*made*/,
          std::size_t /*size*/) noexcept {}

}  // namespace DBStore
