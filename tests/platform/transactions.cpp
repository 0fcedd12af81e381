// Transactions, nested by savepoints, and the types shared with SmartNICs as a table.
#include "platform/schema_store.h"

#include "store.h"

namespace DBStore {

using internal::Operate;
using testing::Operation;

int StoreConnection::Run(const char* sql) {
  const int status = sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
  return status == SQLITE_OK ? SQLITE_OK : Fail(sqlite3_extended_errcode(database), sql);
}

void StoreConnection::EndTransaction() {
  store.writer = nullptr;
  store.writerIsDone.notify_all();
  if (attached && attachments == 0) {
    attached = Run("DETACH ss") != SQLITE_OK;
  }
}

int BeginTransaction(const ConnectionHandle& connection) {
  return Operate(connection, Operation::BEGIN, StoreConnection::WRITE, [&] {
    const int status = connection->Run(connection->depth == 0 ? "BEGIN" : "SAVEPOINT level");
    if (status == SQLITE_OK && ++connection->depth == 1) {
      connection->store.writer = connection.get();
      connection->store.writersThread = std::this_thread::get_id();
    }
    return status;
  });
}

int CommitTransaction(const ConnectionHandle& connection) {
  return Operate(connection, Operation::COMMIT, StoreConnection::READ, [&] {
    if (connection->depth == 0) {
      return internal::Fail(SQLITE_MISUSE, "committing: no transaction was begun");
    }
    int status = connection->Run(connection->depth == 1 ? "COMMIT" : "RELEASE level");
    if (status == SQLITE_OK) {
      status = connection->Publish();
    }
    if (status == SQLITE_OK && --connection->depth == 0) {
      connection->EndTransaction();
    }
    return status;
  });
}

int CancelTransaction(const ConnectionHandle& connection) {
  return Operate(connection, Operation::CANCEL, StoreConnection::UNDO, [&] {
    if (connection->depth == 0) {
      return internal::Fail(SQLITE_MISUSE, "cancelling: no transaction was begun");
    }
    // What cannot be undone alone is undone with all the rest: the levels around it are then lost.
    if (connection->InOrder() &&
        (connection->depth == 1 ||
         connection->Run("ROLLBACK TO level; RELEASE level") != SQLITE_OK)) {
      connection->Run("ROLLBACK");
    }
    if (--connection->depth == 0) {
      connection->EndTransaction();
    }
    return SQLITE_OK;
  });
}

int AttachSchemaStore(const ConnectionHandle& connection) {
  std::string sql =
      "ATTACH ':memory:' AS ss;"
      "CREATE TABLE ss.SmartnicSchema(Component, ConfigGroup, Name, ValueType);";
  const auto types = TarnSchemaStore::SchemaStore::GetCache();
  for (const auto& [component, group, key] : types->GetTypes()) {
    // None of these needs quoting.
    const std::string& kind = types->GetSchemaObject(component, group, key)->GetValueType();
    if (kind == "tarn-shared") {
      sql += "INSERT INTO ss.SmartnicSchema VALUES('" + component + "','" + group + "','" + key +
             "','" + kind + "');";
    }
  }
  return Operate(connection, Operation::ATTACH, StoreConnection::READ, [&] {
    const int status = connection->attached ? SQLITE_OK : connection->Run(sql.c_str());
    if (status == SQLITE_OK) {
      connection->attached = true;
      ++connection->attachments;
    }
    return status;
  });
}

int DetachSchemaStore(const ConnectionHandle& connection) {
  return Operate(connection, Operation::DETACH, StoreConnection::UNDO, [&] {
    if (connection->attachments == 0) {
      return internal::Fail(SQLITE_MISUSE, "the schema store is not attached");
    }
    // SQLite cannot detach what an open transaction has read.
    if (--connection->attachments == 0 && connection->depth == 0) {
      connection->attached = connection->Run("DETACH ss") != SQLITE_OK;
    }
    return SQLITE_OK;
  });
}

}  // namespace DBStore
