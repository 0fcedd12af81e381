// The key/value entries beside the configuration.
#include "db/borrowed_statement.h"
#include "db/last_error.h"
#include "db/layout_statements.h"
#include "db/queued_write.h"
#include "db/store_connection.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

namespace DBStore {
namespace {

int BindWhole(sqlite3_stmt* statement, int index, const std::string& text) noexcept {
  return sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_STATIC,
                             SQLITE_UTF8);
}

}  // namespace

int StoreConnection::ReadKeyValue(const std::string& key, std::string* value) {
  const Action action("reading a key/value entry");
  const Guard guard(lock_);
  if (const int refused = CheckReading(action)) {
    return refused;
  }
  const BorrowedStatement statement(*this, internal::Sql::kReadKeyValue);
  if (!statement) {
    return SQLITE_ERROR;
  }
  int code = BindWhole(statement.Get(), 1, key);
  if (code == SQLITE_OK) {
    code = sqlite3_step(statement.Get());
  }
  if (code == SQLITE_DONE) {
    value->clear();
    return SQLITE_OK;
  }
  if (code == SQLITE_ROW) {
    if (const unsigned char* text = sqlite3_column_text(statement.Get(), 0)) {
      value->assign(reinterpret_cast<const char*>(text),
                    static_cast<std::size_t>(sqlite3_column_bytes(statement.Get(), 0)));
      return SQLITE_OK;
    }
    code = SQLITE_NOMEM;
  }
  return Report(code, action);
}

int StoreConnection::WriteKeyValue(const std::string& key, const std::string& value) {
  const Action action("writing the key/value entry", key);
  const Guard guard(lock_);
  QueuedWrite write(*this);
  if (const int refused = write.Enter(kWaitLimit, action)) {
    return refused;
  }
  const BorrowedStatement statement(*this, internal::Sql::kWriteKeyValue, waitLimit_);
  if (!statement) {
    return SQLITE_ERROR;
  }
  int code = BindWhole(statement.Get(), 1, key);
  if (code == SQLITE_OK) {
    code = BindWhole(statement.Get(), 2, value);
  }
  if (code == SQLITE_OK) {
    code = sqlite3_step(statement.Get());
  }
  if (code != SQLITE_DONE) {
    return Report(code, action);
  }
  return SQLITE_OK;
}

int ReadKeyValue(const std::string& key, std::string* value, const ConnectionHandle& connection) {
  StoreConnection* const usable = internal::Usable(connection);
  if (usable == nullptr || value == nullptr) {
    return SQLITE_MISUSE;
  }
  const int status = internal::AskHook(testing::Operation::READ_KEY_VALUE, key);
  return status != 0 ? status : usable->ReadKeyValue(key, value);
}

int WriteKeyValue(const std::string& key, const std::string& value,
                  const ConnectionHandle& connection) {
  StoreConnection* const usable = internal::Usable(connection);
  if (usable == nullptr) {
    return SQLITE_MISUSE;
  }
  const int status = internal::AskHook(testing::Operation::WRITE_KEY_VALUE, key);
  return status != 0 ? status : usable->WriteKeyValue(key, value);
}

}  // namespace DBStore
