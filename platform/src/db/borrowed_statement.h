// A statement that a connection runs for itself.
#pragma once

#include "db/store_connection.h"

#include <sqlite3.h>

namespace DBStore {

/// Takes a cached statement, whose user binds it himself, and gives it back reset and unbound, while the
/// connection's lock is held. False when the statement could not be prepared; the failure is then
/// reported.
class StoreConnection::BorrowedStatement {
 public:
  BorrowedStatement(StoreConnection& connection, std::string_view sql, int limit = kWaitLimit)
      : connection_(connection), entry_(connection.TakeLocked(sql, limit)) {}
  ~BorrowedStatement() {
    if (entry_ != nullptr) {
      connection_.statements_.GiveBack(entry_);
      if (entry_->statement != nullptr) {
        sqlite3_clear_bindings(entry_->statement);
      }
    }
  }
  BorrowedStatement(const BorrowedStatement&) = delete;
  BorrowedStatement& operator=(const BorrowedStatement&) = delete;

  explicit operator bool() const noexcept { return entry_ != nullptr; }
  sqlite3_stmt* Get() const noexcept { return entry_->statement; }

 private:
  StoreConnection& connection_;
  internal::CachedStatement* entry_;
};

}  // namespace DBStore
