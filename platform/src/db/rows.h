// What a statement answers that is run once, on a database that is not a store's connection.
#pragma once

#include <sqlite3.h>

#include <string>

namespace DBStore::internal {

/// Steps through the rows of a statement.
class Rows {
 public:
  Rows(sqlite3* database, const char* sql) {
    code_ = sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr);
  }
  ~Rows() { sqlite3_finalize(statement_); }
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;

  /// The first parameter.
  void Bind(const char* text) {
    if (code_ == SQLITE_OK) {
      code_ = sqlite3_bind_text(statement_, 1, text, -1, SQLITE_TRANSIENT);
    }
  }
  bool Next() {
    if (code_ == SQLITE_OK || code_ == SQLITE_ROW) {
      code_ = sqlite3_step(statement_);
    }
    return code_ == SQLITE_ROW;
  }
  /// An empty text for NULL; also where there is no memory, which ends the rows.
  std::string Text(int column) {
    const unsigned char* text = sqlite3_column_text(statement_, column);
    if (text == nullptr) {
      // What could not be made a text is NULL from then on.
      code_ = sqlite3_errcode(sqlite3_db_handle(statement_)) == SQLITE_NOMEM ? SQLITE_NOMEM : code_;
      return std::string();
    }
    return reinterpret_cast<const char*>(text);
  }
  int Number(int column) const { return sqlite3_column_int(statement_, column); }
  /// An SQLite result code; 0 after the last row.
  int Code() const { return code_ == SQLITE_DONE ? SQLITE_OK : code_; }

 private:
  sqlite3_stmt* statement_ = nullptr;
  int code_ = SQLITE_OK;
};

}  // namespace DBStore::internal
