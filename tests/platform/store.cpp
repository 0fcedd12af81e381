// Making and opening stores, taking turns on them, and transactions, nested by savepoints.
#include "store.h"

#include "platform/host_backup.h"
#include "platform/host_copy.h"
#include "platform/host_paths.h"
#include "platform/host_repair.h"
#include "platform/host_setup.h"
#include "platform/schema_store.h"

#include "db/last_error.h"
#include "db/layout.h"
#include "db/open_databases.h"

#include <map>
#include <stdexcept>
#include <unistd.h>

namespace DBStore {
namespace {

// Leaked, as everything is that callers may ask for while the process exits.
std::mutex& storesLock = *new std::mutex;
auto& stores = *new std::map<std::string, Store>;
const pid_t home = getpid();

void OpenOrRaise(const std::string& name, sqlite3** database) {
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI;
  if (sqlite3_open_v2(name.c_str(), database, kFlags, nullptr) != SQLITE_OK) {
    throw std::runtime_error("no memory for " + name);
  }
}

int Copy(sqlite3* from, sqlite3* to) {
  sqlite3_backup* const copy = sqlite3_backup_init(to, "main", from, "main");
  sqlite3_backup_step(copy, -1);
  const int status = sqlite3_backup_finish(copy);
  return status == SQLITE_OK ? SQLITE_OK : internal::Fail(status, "copying the store");
}

}  // namespace

Store::Store(int number)
    : name("file:store-" + std::to_string(number) + "?mode=memory&cache=shared") {
  OpenOrRaise(name, &committed);
  if (sqlite3_exec(committed, internal::CurrentStoreLayout().definition, nullptr, nullptr,
                   nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(committed));
  }
}

StoreConnection::StoreConnection(Store& itsStore) : store(itsStore) {
  OpenOrRaise(":memory:", &database);
  internal::OpenDatabases::Enter();
}

StoreConnection::~StoreConnection() {
  const std::lock_guard guard(store.lock);
  sqlite3_close(database);
  internal::OpenDatabases::Leave();
  if (store.writer == this) {
    EndTransaction();
  }
}

Turn::Turn(const ConnectionHandle& connection) noexcept : connection_(connection.get()) {
  if (connection_ != nullptr) {
    connection_->turn.lock();
  }
}

Turn::~Turn() {
  if (connection_ != nullptr) {
    connection_->turn.unlock();
  }
}

int StoreConnection::Enter(std::unique_lock<std::mutex>& lock, Access access, int limit) {
  const auto mayWrite = [&] { return store.writer == nullptr || store.writer == this; };
  if (access == WRITE && !mayWrite()) {
    if (store.writersThread == std::this_thread::get_id()) {
      return internal::Fail(SQLITE_BUSY,
                            "this thread has a transaction open on another connection");
    }
    if (!store.writerIsDone.wait_for(lock, std::chrono::milliseconds(limit), mayWrite)) {
      return internal::Fail(SQLITE_BUSY, "another connection's transaction goes on");
    }
  }
  if (access != UNDO && depth == 0 && internal::CurrentStore() != &store) {
    return internal::Fail(SQLITE_MISUSE, "the host root is another one since this was opened");
  }
  if (access != UNDO && !InOrder()) {
    return internal::Fail(SQLITE_ABORT_ROLLBACK, "the transaction was ended by somebody else");
  }
  // SQLite cannot detach what an open transaction has read.
  if (depth == 0 && attached && attachments == 0) {
    attached = Run("DETACH ss") != SQLITE_OK;
  }
  return depth == 0 ? Copy(store.committed, database) : SQLITE_OK;
}

int StoreConnection::Publish() {
  return sqlite3_get_autocommit(database) != 0 ? Copy(database, store.committed) : SQLITE_OK;
}

int StoreConnection::Fail(int status, std::string_view action) const {
  return internal::Fail(status, std::string(action) + ": " + sqlite3_errmsg(database));
}

ConnectionHandle GetConnection(Type type, bool /*writable*/) {
  if (internal::AskHook(testing::Operation::GET_CONNECTION, {}) != 0) {
    return nullptr;
  }
  Store* const store = internal::CurrentStore();
  if (type != Type::CURRENT_STORE || store == nullptr || getpid() != home) {
    internal::Fail(SQLITE_CANTOPEN, "there is no such store in the memory of this process");
    return nullptr;
  }
  return std::make_shared<StoreConnection>(*store);
}

namespace internal {

Store* CurrentStore() {
  const std::lock_guard guard(storesLock);
  const auto found = stores.find(HostPaths::GetRoot());
  return found == stores.end() ? nullptr : &found->second;
}

int Fail(int status, const std::string& what) {
  ReportFailure(status == SQLITE_CANTOPEN ? ErrorKind::MISSING : ErrorKindOf(status), status, what);
  return status;
}

int Refuse(const ConnectionHandle& connection, testing::Operation operation,
           std::string_view detail) {
  if (!connection || getpid() != home) {
    return Fail(SQLITE_MISUSE, connection ? "the connection is the parent's" : "no connection");
  }
  return AskHook(operation, detail);
}

}  // namespace internal

int StoreConnection::Run(const char* sql) {
  const int status = sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
  return status == SQLITE_OK ? SQLITE_OK : Fail(sqlite3_extended_errcode(database), sql);
}

void StoreConnection::EndTransaction() {
  store.writer = nullptr;
  store.writerIsDone.notify_all();
}

int BeginTransaction(const ConnectionHandle& connection) {
  return internal::Operate(connection, testing::Operation::BEGIN, StoreConnection::WRITE, [&] {
    const int status = connection->Run(connection->depth == 0 ? "BEGIN" : "SAVEPOINT level");
    if (status == SQLITE_OK && ++connection->depth == 1) {
      connection->store.writer = connection.get();
      connection->store.writersThread = std::this_thread::get_id();
    }
    return status;
  });
}

int CommitTransaction(const ConnectionHandle& connection) {
  return internal::Operate(connection, testing::Operation::COMMIT, StoreConnection::READ, [&] {
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

bool IsInTransaction(const ConnectionHandle& connection) noexcept {
  return connection && connection->depth > 0;
}

int CancelTransaction(const ConnectionHandle& connection) {
  return internal::Operate(connection, testing::Operation::CANCEL, StoreConnection::UNDO, [&] {
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
  return internal::Operate(connection, testing::Operation::ATTACH, StoreConnection::READ, [&] {
    const int status = connection->attached ? SQLITE_OK : connection->Run(sql.c_str());
    if (status == SQLITE_OK) {
      connection->attached = true;
      ++connection->attachments;
    }
    return status;
  });
}

int DetachSchemaStore(const ConnectionHandle& connection) {
  return internal::Operate(connection, testing::Operation::DETACH, StoreConnection::UNDO, [&] {
    if (connection->attachments == 0) {
      return internal::Fail(SQLITE_MISUSE, "the schema store is not attached");
    }
    --connection->attachments;
    return SQLITE_OK;
  });
}

std::string testing::StoreName() {
  const Store* const store = internal::CurrentStore();
  return store == nullptr ? std::string() : store->name;
}

}  // namespace DBStore

HostSetup::Result HostSetup::Initialize() {
  using namespace DBStore;
  const std::lock_guard guard(storesLock);
  const auto [store, made] =
      stores.try_emplace(HostPaths::GetRoot(), static_cast<int>(stores.size()));
  Result result;
  (made ? result.created : result.unchanged).push_back(store->second.name);
  return result;
}

// There is no file to copy: what is in memory ends with the process.
[[noreturn]] static void RefuseFile(const std::string& path) {
  const std::string message = path + ": this platform keeps its stores in memory";
  DBStore::internal::Fail(SQLITE_MISUSE, message);
  throw std::runtime_error(message);
}

HostBackup::Written HostBackup::Backup(const std::string& path, bool /*replace*/) {
  RefuseFile(path);
}

HostBackup::Restored HostBackup::Restore(const std::string& path, bool /*force*/) {
  RefuseFile(path);
}

void HostCopy::Copy(const std::string& first, const std::string& /*second*/) {
  RefuseFile(first);
}
std::map<std::string, std::string> HostCopy::ReadEntries() {
  return {};
}
std::string HostCopy::WhyNotWritable(const char* /*fixedPath*/) {
  return {};
}

HostRepair::Examination HostRepair::Examine() {
  return {{}, true, true, false};
}
std::string HostRepair::MakeKeepingPlace() {
  RefuseFile("the directory for what a repair keeps");
}
HostRepair::Action HostRepair::KeepCopies(const std::string& keepingPlace) {
  RefuseFile(keepingPlace);
}
std::vector<HostRepair::Action> HostRepair::MendFiles(const std::string& /*keepingPlace*/) {
  return {};
}
std::vector<HostRepair::Action> HostRepair::MendDatabases(const std::string& /*keepingPlace*/,
                                                          bool /*withoutTypes*/,
                                                          const KeepRows& /*keep*/) {
  return {};
}
