// One statement that is run once, on a database that is not a store's connection, in whatever state it is.
#pragma once

#include <sqlite3.h>

#include <new>
#include <string>
#include <string_view>

namespace DBStore::internal {

/// A prepared statement. What fails is told by Code; nothing is reported.
class Query {
 public:
  Query(sqlite3* database, std::string_view sql) noexcept
      : code_(sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &statement_,
                                 nullptr)) {}
  ~Query() { sqlite3_finalize(statement_); }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  sqlite3_stmt* Statement() const noexcept { return statement_; }

  /// The text has to live until the last row.
  Query& Bind(std::string_view text) noexcept {
    if (code_ == SQLITE_OK) {
      code_ = sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()),
                                SQLITE_STATIC);
    }
    return *this;
  }

  /// True for a row; false at the end, and when it fails.
  bool Step() noexcept {
    if (code_ != SQLITE_OK) {
      return false;
    }
    const int status = sqlite3_step(statement_);
    code_ = status == SQLITE_ROW || status == SQLITE_DONE ? SQLITE_OK : status;
    return status == SQLITE_ROW;
  }

  /// Empty for NULL. Raises std::bad_alloc.
  std::string Text(int column) const {
    const unsigned char* text = sqlite3_column_text(statement_, column);
    if (text == nullptr && sqlite3_errcode(sqlite3_db_handle(statement_)) == SQLITE_NOMEM) {
      throw std::bad_alloc();
    }
    return text == nullptr
               ? std::string()
               : std::string(reinterpret_cast<const char*>(text),
                             static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
  }
  /// Whether the column holds this text. Takes no memory but SQLite's.
  bool Is(int column, std::string_view text) const noexcept {
    const unsigned char* held = sqlite3_column_text(statement_, column);
    return held != nullptr && reinterpret_cast<const char*>(held) == text;
  }
  int Number(int column) const noexcept { return sqlite3_column_int(statement_, column); }

  /// SQLITE_OK as long as nothing failed.
  int Code() const noexcept { return code_; }

 private:
  sqlite3_stmt* statement_ = nullptr;
  int code_;
  int bound_ = 0;
};

}  // namespace DBStore::internal
