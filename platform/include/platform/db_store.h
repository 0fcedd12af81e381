// The database layer: connections, transactions, key/value entries and statements. SQLite behind
// it.
//
// Statuses are SQLite's result codes: 0 is success, ExecuteStmt answers 1 for every failure. Each
// failure is logged and kept as the thread's last store error (store_error.h). Empty connection or
// statement handles are answered with a non-zero status everywhere.
//
// Thread safety: connections may be shared by threads, which then share its transaction; everything
// else is per call.
//
// Forking: the child takes connections of its own; the parent's refuse it. A child that was forked
// in the middle of a transaction or statement of any thread gets none, since it could neither close
// nor ignore it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3_stmt;

namespace DBStore {

/// The databases there are.
enum class Type : int { CURRENT_STORE = 0 };

/// How long, in milliseconds, a statement waits for another connection's write to end.
constexpr int kWaitLimit = 3000;

class StoreConnection;
using ConnectionHandle = std::shared_ptr<StoreConnection>;

/// A connection that nobody else holds; returning it to the pool is dropping the handle. Empty when
/// the store cannot be opened: the reason is logged and kept as the last store error. Never creates
/// anything.
/// \param writable  asks for writing where this user may; a store that may only be read is opened
///                  for that
ConnectionHandle GetConnection(Type type, bool writable);

/// Transactions nest: the outermost is BEGIN IMMEDIATE, each inner one a savepoint.
/// Begin fails with 8 on a store that may only be read, with 5 after the wait limit when another
/// writer goes on, or at once when that is this thread on another connection, and with 516 when
/// SQLite has rolled the open levels back by itself; statements and key/value entries are then
/// refused too. Commit fails with 21 when nothing was begun and 516 after such a roll-back; the
/// level then stays until it is cancelled. Cancel undoes the innermost level; 21 when nothing was
/// begun, otherwise 0.
int BeginTransaction(const ConnectionHandle& connection);
int CommitTransaction(const ConnectionHandle& connection);
int CancelTransaction(const ConnectionHandle& connection);

/// A missing entry reads as success with an empty text. Without a connection, or when the calling
/// thread holds a write transaction on another connection (WriteKeyValue only), fails at once.
int ReadKeyValue(const std::string& key, std::string* value, const ConnectionHandle& connection);
int WriteKeyValue(const std::string& key, const std::string& value,
                  const ConnectionHandle& connection);

/// Makes the schema store's tables visible as "ss" for reading, and removes them again when as many
/// calls asked for it, inside a transaction at its end.
int AttachSchemaStore(const ConnectionHandle& connection);
int DetachSchemaStore(const ConnectionHandle& connection);

/// Gives a statement back to its connection, reset and without bindings.
struct SqliteStmtDeleter {
  mutable ConnectionHandle connection;  ///< kept alive while the statement is used, and then let go
  void* slot = nullptr;                 ///< the statement's place in the connection's cache
  void operator()(sqlite3_stmt* statement) const noexcept;
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, SqliteStmtDeleter>;

/// Gets each result row: values are NUL-terminated texts, null for NULL, valid during the call.
/// Anything but 0 stops the statement. What it throws passes through ExecuteStmt; the statement is
/// reset by its handle.
using RowCallback = int (*)(void* context, int columnCount, char** values, char** names);

/// Steps a statement to its end, after which it can run again. 0 on success, 1 on any failure: a
/// callback that stops it is one, and so is writing while this thread has a transaction open on
/// another connection.
int ExecuteStmt(const ConnectionHandle& connection, const StatementHandle& statement,
                RowCallback callback, void* context, int limit);

/// A text that may be NULL. Refers to the text; it has to live until the statement has run.
class NullableSV {
 public:
  NullableSV() = default;
  NullableSV(std::string_view text) : text_(text), null_(false) {}
  NullableSV(const std::string& text) : text_(text), null_(false) {}
  bool IsNull() const { return null_; }
  std::string_view Text() const { return text_; }

 private:
  std::string_view text_;
  bool null_ = true;
};

namespace internal {

/// A statement from the connection's cache, prepared only if it was never seen there. Empty on
/// failure.
StatementHandle Prepare(const ConnectionHandle& connection, std::string_view sql, int limit);

/// Each sets the parameter at `index` and, on success, advances it by one; the engine gets it when
/// the statement runs. Texts are not copied: they have to live until then. An empty text is bound as
/// an empty text. The flag is not used.
int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         int value);
int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         std::string_view text, bool flag);
int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         NullableSV value);

}  // namespace internal

/// A statement text with one text parameter for each template argument. The text is a literal: it
/// outlives everything.
template <class... Parameters>
class SqlStatement {
 public:
  constexpr explicit SqlStatement(const char* sql) : sql_(sql) {}
  constexpr std::string_view Text() const { return sql_; }

  /// Prepares and binds; an empty handle if either fails.
  static StatementHandle PrepareAndBind(const ConnectionHandle& connection, std::string_view sql,
                                        Parameters... parameters) {
    StatementHandle statement = internal::Prepare(connection, sql, kWaitLimit);
    int index = 1;
    if (!statement ||
        ((internal::Bind(connection, statement, index, parameters, false) != 0) || ...)) {
      return StatementHandle();
    }
    return statement;
  }
  StatementHandle PrepareAndBind(const ConnectionHandle& connection,
                                 Parameters... parameters) const {
    return PrepareAndBind(connection, sql_, parameters...);
  }

 private:
  std::string_view sql_;
};

}  // namespace DBStore
