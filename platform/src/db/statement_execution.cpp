// Preparing, binding and running statements.
#include "db/last_error.h"
#include "db/queued_write.h"
#include "db/store_connection.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

#include <array>
#include <charconv>
#include <vector>

namespace DBStore {
namespace {

// The texts of one row, as the callback gets them.
class RowTexts {
 public:
  explicit RowTexts(int columns) : columns_(columns) {
    if (static_cast<std::size_t>(columns) > fixed_.size() / 2) {
      many_.resize(static_cast<std::size_t>(columns) * 2);
      texts_ = many_.data();
      manyDigits_.resize(static_cast<std::size_t>(columns));
      digits_ = manyDigits_.data();
    }
  }
  RowTexts(const RowTexts&) = delete;
  RowTexts& operator=(const RowTexts&) = delete;

  char** Values() noexcept { return texts_; }
  char** Names() noexcept { return texts_ + columns_; }

  /// The names are asked for once in a statement's life.
  void FetchNames(internal::CachedStatement& entry) {
    if (entry.columns.size() != static_cast<std::size_t>(columns_)) {
      entry.columns.clear();
      for (int column = 0; column < columns_; ++column) {
        const char* name = sqlite3_column_name(entry.statement, column);
        entry.columns.push_back({name == nullptr ? "" : name});
      }
    }
    char** next = Names();
    for (internal::CachedStatement::Column& column : entry.columns) {
      *next++ = column.name.data();
    }
  }

  /// False when there is no memory for a text. A column's values are of one kind as a rule: texts are
  /// asked for as such, and what is none is looked at.
  bool FetchValues(internal::CachedStatement& entry) noexcept {
    for (int column = 0; column < columns_; ++column) {
      int& kind = entry.columns[static_cast<std::size_t>(column)].kind;
      char*& value = Values()[column];
      value = kind == SQLITE_TEXT ? Text(entry.statement, column) : nullptr;
      if (value != nullptr) {
        continue;
      }
      kind = sqlite3_column_type(entry.statement, column);
      if (kind == SQLITE_INTEGER) {
        value = Write(sqlite3_column_int64(entry.statement, column), digits_[column]);
      } else if (kind != SQLITE_NULL) {
        value = Text(entry.statement, column);
        if (value == nullptr) {
          return false;
        }
      }
    }
    return true;
  }

 private:
  // The engine takes memory for a number's text, and longer to write it than a row to be found.
  using Digits = std::array<char, 24>;
  static char* Write(sqlite3_int64 number, Digits& digits) noexcept {
    *std::to_chars(digits.data(), digits.data() + digits.size() - 1, number).ptr = '\0';
    return digits.data();
  }

  static char* Text(sqlite3_stmt* statement, int column) noexcept {
    return const_cast<char*>(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)));
  }

  static constexpr std::size_t kUsualColumns = 32;
  const int columns_;
  std::array<char*, 2 * kUsualColumns> fixed_;
  std::array<Digits, kUsualColumns> fixedDigits_;
  std::vector<char*> many_;
  std::vector<Digits> manyDigits_;
  char** texts_ = fixed_.data();
  Digits* digits_ = fixedDigits_.data();
};

internal::CachedStatement* EntryOf(const ConnectionHandle& connection,
                                   const StatementHandle& statement) {
  if (!statement && statement.get_deleter().failed) {
    return nullptr;
  }
  if (!statement || statement.get_deleter().connection != connection) {
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                            "there is no statement, or it belongs to another connection");
    return nullptr;
  }
  return static_cast<internal::CachedStatement*>(statement.get_deleter().slot);
}

}  // namespace

internal::CachedStatement* StoreConnection::TakeStatement(std::string_view sql, int limit) {
  const Guard guard(lock_);
  return TakeLocked(sql, limit);
}

void StoreConnection::GiveBackStatement(internal::CachedStatement* entry) noexcept {
  if (!IsInherited()) {
    const Guard guard(lock_);
    statements_.GiveBack(entry);
  }
}

int StoreConnection::Execute(internal::CachedStatement* entry, RowCallback callback, void* context,
                             int limit) {
  const Guard guard(lock_);
  const Action action = Action::Of("running", entry->text);
  if (entry->running) {
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                            {fixedPath_, ": ", action.Text().text, ": it is running already"});
    return SQLITE_ERROR;
  }
  QueuedWrite write(*this);
  if (sqlite3_stmt_readonly(entry->statement) != 0) {
    LimitWaiting(limit);
    if (CheckReading(action) != SQLITE_OK) {
      return SQLITE_ERROR;
    }
  } else if (write.Enter(limit, action) != SQLITE_OK) {
    return SQLITE_ERROR;
  }
  if (const int code = entry->parameters.Bind(entry->statement); code != SQLITE_OK) {
    Report(code, Action::Of("binding the parameters of", entry->text));
    return SQLITE_ERROR;
  }

  // Whichever way it ends, the statement holds no read lock any more and can run again.
  class Running {
   public:
    Running(StoreConnection& connection, internal::CachedStatement& entry) noexcept
        : connection_(connection), entry_(entry) {
      entry_.running = true;
      ++connection_.executing_;
    }
    ~Running() {
      if (connection_.IsInherited()) {
        return;  // a callback forked, and this is the child
      }
      sqlite3_reset(entry_.statement);
      entry_.running = false;
      --connection_.executing_;
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

   private:
    StoreConnection& connection_;
    internal::CachedStatement& entry_;
  };
  const Running running(*this, *entry);
  return StepThrough(*entry, callback, context);
}

int StoreConnection::StepThrough(internal::CachedStatement& entry, RowCallback callback,
                                 void* context) {
  const Action action = Action::Of("running", entry.text);
  int code = sqlite3_step(entry.statement);
  if (code == SQLITE_ROW && callback != nullptr) {
    const int columns = sqlite3_column_count(entry.statement);
    RowTexts row(columns);
    row.FetchNames(entry);
    do {
      if (!row.FetchValues(entry)) {
        code = SQLITE_NOMEM;
        break;
      }
      const int answer = callback(context, columns, row.Values(), row.Names());
      if (!IsUsable()) {
        return SQLITE_ERROR;
      }
      if (answer != 0) {
        internal::ReportFailure(
            ErrorKind::OTHER, SQLITE_ABORT,
            {fixedPath_, ": \"", entry.text, "\" was stopped by the receiver of its rows"});
        return SQLITE_ERROR;
      }
      if (IsTransactionGone()) {
        break;
      }
      code = sqlite3_step(entry.statement);
    } while (code == SQLITE_ROW);
  }
  while (code == SQLITE_ROW && !IsTransactionGone()) {
    code = sqlite3_step(entry.statement);
  }
  if (code != SQLITE_DONE && code != SQLITE_ROW) {
    Report(code, action);
    return SQLITE_ERROR;
  }
  if (IsTransactionGone()) {
    RefuseGone(action);
    return SQLITE_ERROR;
  }
  return SQLITE_OK;
}

void SqliteStmtDeleter::operator()(sqlite3_stmt*) const noexcept {
  // An empty handle must not keep a connection from its pool.
  const ConnectionHandle owner = std::move(connection);
  owner->GiveBackStatement(static_cast<internal::CachedStatement*>(slot));
}

int ExecuteStmt(const ConnectionHandle& connection, const StatementHandle& statement,
                RowCallback callback, void* context, int limit) {
  StoreConnection* const usable = internal::Usable(connection);
  if (usable == nullptr) {
    return SQLITE_ERROR;
  }
  internal::CachedStatement* const entry = EntryOf(connection, statement);
  if (entry == nullptr) {
    return SQLITE_ERROR;
  }
  const int status = internal::AskHook(testing::Operation::EXECUTE, entry->text);
  return status != 0 ? status : usable->Execute(entry, callback, context, limit);
}

namespace internal {

StatementHandle Prepare(const ConnectionHandle& connection, std::string_view sql, int limit) {
  StoreConnection* const usable = Usable(connection);
  if (usable == nullptr || AskHook(testing::Operation::PREPARE, sql) != 0) {
    return NoStatement();
  }
  CachedStatement* const entry = usable->TakeStatement(sql, limit);
  if (entry == nullptr) {
    return NoStatement();
  }
  return StatementHandle(entry->statement, SqliteStmtDeleter{connection, entry});
}

namespace {

// Sets a parameter. It goes no further than the statement's own memory: whose connection that is,
// and whether it may be used, is asked when the statement runs.
template <class SetParameter>
int Set(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
        SetParameter set) {
  if (!statement && statement.get_deleter().failed) {
    return SQLITE_MISUSE;
  }
  if (!connection || !statement) {
    ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE, "there is no statement, or no connection");
    return SQLITE_MISUSE;
  }
  auto* const entry = static_cast<CachedStatement*>(statement.get_deleter().slot);
  if (!set(entry->parameters)) {
    ReportFailure(ErrorKind::MISUSE, SQLITE_RANGE,
                  {"\"", entry->text, "\" has no parameter ", std::to_string(index)});
    return SQLITE_RANGE;
  }
  ++index;
  return SQLITE_OK;
}

}  // namespace

int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         int value) {
  return Set(connection, statement, index,
             [&](Parameters& parameters) { return parameters.SetInteger(index, value); });
}

int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         std::string_view text, bool) {
  return Set(connection, statement, index,
             [&](Parameters& parameters) { return parameters.SetText(index, text); });
}

int Bind(const ConnectionHandle& connection, const StatementHandle& statement, int& index,
         NullableSV value) {
  return Set(connection, statement, index, [&](Parameters& parameters) {
    return value.IsNull() ? parameters.SetNull(index) : parameters.SetText(index, value.Text());
  });
}

}  // namespace internal
}  // namespace DBStore
