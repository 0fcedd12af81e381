// The database layer: connections to the store, transactions, key/value entries and statements. The
// store's tables and its SQL are SQLite's; where it lies and how connections are kept is the
// platform's business.
//
// Statuses: 0 is success, any other a failure, in the numbers of SQLite's result codes; those that
// mean something of their own are named below. ExecuteStmt answers 1 for every failure. Each failure
// is logged at priority 0 and kept as the thread's last store error (store_error.h). An empty
// connection or statement is answered with a status other than 0, or with an empty handle.
//
// Thread safety: everything may be called from several threads, for one connection too; each call is
// one step, and a Turn makes several of them one. Threads that share a connection share its
// transaction. A statement is for one thread at a time. A thread is not cancelled (pthreads(7)) in
// the middle of a call.
//
// A connection serves the store that it was opened for: it fails as a store that is missing does when
// another file, or none, stands at its path, and with 21 when the host root is another one. Asked
// before each outermost begin and each write outside a transaction; for reads, every few
// milliseconds. What was begun may be committed and cancelled all the same.
//
// Forking: what was opened before is never touched by the child, whose calls on it fail. The child
// gets connections of its own, or none when the platform cannot give it any, with the reason told.
#pragma once

#include <memory>
#include <string>
#include <string_view>

struct sqlite3_stmt;

namespace DBStore {

/// The databases there are.
enum class Type : int { CURRENT_STORE = 0 };

/// How long, in milliseconds, anything waits for another connection's write to end, unless it is
/// told another limit.
constexpr int kWaitLimit = 3000;

/// The platform's own.
class StoreConnection;
using ConnectionHandle = std::shared_ptr<StoreConnection>;

/// A connection that nobody else holds; dropping the handle gives it back, and undoes what it has
/// not committed. Empty when the store cannot be opened. Never makes a store: one that is lost is an
/// error.
/// \param writable  asks for writing where this user may; a store that may only be read is opened
///                  for that
ConnectionHandle GetConnection(Type type, bool writable);

/// Makes several calls on a connection one operation: while this lives, the calls of other threads on
/// the connection wait for its end. A thread may take several turns on a connection, one inside the
/// other. For one operation at a time: never kept between a caller's begin and commit, nor while
/// anybody else is told of a change. An empty connection has nothing to take.
class Turn {
 public:
  explicit Turn(const ConnectionHandle& connection) noexcept;
  ~Turn();
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  StoreConnection* connection_;  // which the caller holds
};

/// Transactions nest; each level is committed or cancelled once. Other connections see nothing of
/// what was written before the outermost commit, and then all of it. Reading on another connection
/// never waits for it.
///
/// Begin takes the right to write, of which a store has one: 5 when another connection keeps it for
/// longer than the wait limit, and at once when that is this thread's, which would wait for itself;
/// 8 when this user may only read.
/// Commit: 21 when nothing was begun. A commit that failed leaves its level to be cancelled.
/// Cancel undoes the innermost level alone: 0, or 21 when nothing was begun. 1 is the answer of a
/// platform that cannot undo an inner level alone: the caller has to end its process then.
/// What the engine has rolled back by itself (a full disk) stays lost: beginning, committing,
/// statements and key/value entries answer 516, or 1 where they know only that, until the last open
/// level is cancelled; cancelling answers 0.
int BeginTransaction(const ConnectionHandle& connection);
int CommitTransaction(const ConnectionHandle& connection);
int CancelTransaction(const ConnectionHandle& connection);

/// Whether a level is open on the connection. Holds for as long as the caller keeps its turn.
bool IsInTransaction(const ConnectionHandle& connection) noexcept;

/// Texts by keys, beside the configuration; part of the connection's transaction. A missing entry
/// reads as success with an empty text. Writing makes or replaces an entry; where no transaction is
/// open it waits, and is refused, as Begin does.
int ReadKeyValue(const std::string& key, std::string* value, const ConnectionHandle& connection);
int WriteKeyValue(const std::string& key, const std::string& value,
                  const ConnectionHandle& connection);

/// Makes "ss.SmartnicSchema" (Component, ConfigGroup, Name, ValueType) visible to the connection's
/// statements, for reading: the types shared with a SmartNIC. Removed again when as many calls asked
/// for it, inside a transaction at its end; 21 when it is not there.
int AttachSchemaStore(const ConnectionHandle& connection);
int DetachSchemaStore(const ConnectionHandle& connection);

/// Gives a statement back to the platform, which alone makes handles that hold one. An empty handle
/// of a statement that could not be made says so: what runs it then fails without reporting another
/// reason.
struct SqliteStmtDeleter {
  mutable ConnectionHandle connection;  ///< kept alive while the statement is used, and then let go
  void* slot = nullptr;                 ///< the platform's own
  bool failed = false;                  ///< there is no statement, and why has been reported
  void operator()(sqlite3_stmt* statement) const noexcept;
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, SqliteStmtDeleter>;

/// Gets each result row: values are NUL-terminated texts, null for NULL, valid during the call.
/// Anything but 0 stops the statement. What it throws passes through ExecuteStmt.
using RowCallback = int (*)(void* context, int columnCount, char** values, char** names);

/// Steps a statement to its end, after which it can run again, however it ended. 0 on success, 1 on
/// any failure: a callback that stops it is one, and so is writing that waits longer than the limit,
/// or while this thread has a transaction open on another connection, or a statement that begins or
/// ends a transaction.
/// \param callback  may be null
/// \param limit     milliseconds, in place of the wait limit
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

/// What Prepare returns after it reported a failure.
inline StatementHandle NoStatement() {
  return StatementHandle(nullptr, SqliteStmtDeleter{nullptr, nullptr, true});
}

/// One statement, ready to be bound, without bindings of earlier users. Empty on failure: a text
/// that holds none, or more than one, is a failure.
StatementHandle Prepare(const ConnectionHandle& connection, std::string_view sql, int limit);

/// Each sets the parameter at `index` and, on success, advances it by one. Texts are not copied:
/// they have to live until the statement has run. An empty text is bound as an empty text. The flag
/// is not used.
int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         int value);
int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         std::string_view text, bool flag);
int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         NullableSV value);

}  // namespace internal

/// A statement text with one text parameter for each template argument. The text is a literal: it
/// outlives everything. The same on every platform, being made of the operations above.
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
      return internal::NoStatement();
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
