// Talking to the database layer in tests.
#pragma once

#include "platform/db_store.h"
#include "platform/db_testing.h"
#include "platform/store_error.h"

#include "support/child_process.h"
#include "support/temporary_host.h"

#include <gtest/gtest.h>

namespace TestSupport {

inline DBStore::ConnectionHandle Connect() {
  return DBStore::GetConnection(DBStore::Type::CURRENT_STORE, true);
}

/// Prepares, binds the text if there is one, and runs; the status.
inline int Execute(const DBStore::ConnectionHandle& connection, std::string_view sql,
                   DBStore::NullableSV text = {}) {
  const auto statement = DBStore::internal::Prepare(connection, sql, DBStore::kWaitLimit);
  int index = 1;
  if (!text.IsNull() && DBStore::internal::Bind(connection, statement, index, text) != 0) {
    return -1;
  }
  return DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, DBStore::kWaitLimit);
}

/// Rows as "a b - c; d e f g", "-" for NULL; "failed" when the statement does.
inline std::string Rows(const DBStore::ConnectionHandle& connection,
                        const DBStore::StatementHandle& statement) {
  std::string rows;
  const auto append = [](void* context, int columns, char** values, char**) {
    std::string& text = *static_cast<std::string*>(context);
    text += text.empty() ? "" : "; ";
    for (int column = 0; column < columns; ++column) {
      text += column == 0 ? "" : " ";
      text += values[column] == nullptr ? "-" : values[column];
    }
    return 0;
  };
  return DBStore::ExecuteStmt(connection, statement, append, &rows, DBStore::kWaitLimit) == 0
             ? rows
             : "failed";
}

inline std::string Query(const DBStore::ConnectionHandle& connection, std::string_view sql) {
  return Rows(connection, DBStore::internal::Prepare(connection, sql, DBStore::kWaitLimit));
}

inline int WriteKey(const DBStore::ConnectionHandle& connection, const std::string& key) {
  return DBStore::WriteKeyValue(key, "", connection);
}

inline std::string ReadKey(const DBStore::ConnectionHandle& connection, const std::string& key) {
  std::string value;
  const int status = DBStore::ReadKeyValue(key, &value, connection);
  return status == 0 ? value : "failed with " + std::to_string(status);
}

/// A host, and a connection to its store.
class DatabaseTest : public testing::Test {
 protected:
  ~DatabaseTest() override { DBStore::testing::SetHook(nullptr); }

  DBStore::StatementHandle Prepare(std::string_view sql) {
    return DBStore::internal::Prepare(connection_, sql, DBStore::kWaitLimit);
  }

  TemporaryHost host_;
  DBStore::ConnectionHandle connection_ = Connect();
};

}  // namespace TestSupport
