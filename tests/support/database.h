// Looking into a test's store, and putting rows there, without the library.
#pragma once

#include "platform/db_testing.h"

#include "support/temporary_host.h"

#include <sqlite3.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {

/// A connection of its own to the store of a temporary host.
class Database {
 public:
  explicit Database(const TemporaryHost& /*whose store it is*/)
      : Database(DBStore::testing::StoreName()) {}
  /// To any database.
  explicit Database(const std::string& path) {
    if (sqlite3_open_v2(path.c_str(), &database_,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI,
                        nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(database_));
    }
    sqlite3_busy_timeout(database_, 5000);
  }
  ~Database() { sqlite3_close(database_); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Runs a statement; each result row as one text, its columns separated by blanks, "-" for NULL.
  std::vector<std::string> Run(const std::string& sql) {
    std::vector<std::string> rows;
    char* error = nullptr;
    const auto collect = [](void* context, int count, char** values, char**) {
      std::string row;
      for (int i = 0; i < count; ++i) {
        row += std::string(i == 0 ? "" : " ") + (values[i] == nullptr ? "-" : values[i]);
      }
      static_cast<std::vector<std::string>*>(context)->push_back(row);
      return 0;
    };
    if (sqlite3_exec(database_, sql.c_str(), collect, &rows, &error) != SQLITE_OK) {
      const std::string message = error;
      sqlite3_free(error);
      throw std::runtime_error(message + " in: " + sql);
    }
    return rows;
  }

  /// Every row of Config: "component/group/name/identifier u={..} d=- a=- v=- c=- ok=1 rev=2".
  std::string Rows() {
    return Lines(R"(SELECT Component || '/' || ConfigGroup || '/' || Name || '/' || Identifier,
        'u=' || ifnull(UserValue, '-'), 'd=' || ifnull(DesiredValue, '-'),
        'a=' || ifnull(AutoConfValue, '-'), 'v=' || ifnull(VitalValue, '-'),
        'c=' || ifnull(CachedValue, '-'), 'ok=' || Success, 'rev=' || Revision FROM Config ORDER BY 1)");
  }

  /// Every staged change: "component/group/name/identifier SET u={..} v=- c=- 1.0".
  std::string Staged() {
    return Lines(R"(SELECT Component || '/' || ConfigGroup || '/' || Name || '/' || Identifier,
        BootAction, 'u=' || ifnull(Value, '-'), 'v=' || ifnull(VitalValue, '-'),
        'c=' || ifnull(CachedValue, '-'), Version FROM DesiredUserConfig ORDER BY 1)");
  }

  /// The result of a statement, a line for each row.
  std::string Lines(const std::string& sql) {
    std::string text;
    for (const std::string& row : Run(sql)) {
      text += (text.empty() ? "" : "\n") + row;
    }
    return text;
  }

 private:
  sqlite3* database_ = nullptr;
};

}  // namespace TestSupport
