// Stores in memory, one for each host root.
//
// What is committed lies in a database that nobody works on. Each connection works on a copy, which
// it takes anew whenever it is outside of a transaction, and a commit is copied back: so nobody ever
// sees half of a change, or waits to read.
#pragma once

#include "platform/db_store.h"
#include "platform/store_error.h"

#include "db/recursive_lock.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace DBStore {

struct Store {
  explicit Store(int number);

  const std::string name;
  std::mutex lock;  // held by one operation at a time, and guards all that follows
  sqlite3* committed = nullptr;
  const StoreConnection* writer = nullptr;  // the connection with a transaction
  std::thread::id writersThread;
  std::condition_variable writerIsDone;
};

class StoreConnection {
 public:
  explicit StoreConnection(Store& itsStore);
  ~StoreConnection();
  StoreConnection(const StoreConnection&) = delete;
  StoreConnection& operator=(const StoreConnection&) = delete;

  /// Waits until the connection may do what it asks for, and brings its copy up to date.
  enum Access { READ, WRITE, UNDO };
  int Enter(std::unique_lock<std::mutex>& lock, Access access, int limit);
  /// False when the engine has ended the transaction by itself, or a statement has begun one.
  bool InOrder() const { return (depth > 0) == (sqlite3_get_autocommit(database) == 0); }
  /// Makes what was written everybody's, unless a transaction is open.
  int Publish();
  void EndTransaction();
  int Run(const char* sql);
  /// Reports what the engine says, and answers the status.
  int Fail(int status, std::string_view action) const;

  Store& store;
  internal::RecursiveLock turn;  // before the store's own
  sqlite3* database = nullptr;
  int depth = 0;
  int attachments = 0;
  bool attached = false;
};

namespace internal {

/// The store under the root in force, or null.
Store* CurrentStore();

/// Logs a failure, keeps it as the thread's last store error and answers its status.
int Fail(int status, const std::string& what);

/// What an operation answers instead of doing anything, or 0: the connection is empty or the
/// parent's, or a test says so.
int Refuse(const ConnectionHandle& connection, testing::Operation operation,
           std::string_view detail = {});

/// Runs steps in the connection's turn on the store; their status, or why they could not run.
template <class Steps>
int InTurn(StoreConnection& connection, StoreConnection::Access access, int limit,
           const Steps& steps) {
  const std::lock_guard turn(connection.turn);
  std::unique_lock<std::mutex> lock(connection.store.lock);
  const int status = connection.Enter(lock, access, limit);
  return status != 0 ? status : steps();
}

/// The same as an operation of the database layer.
template <class Steps>
int Operate(const ConnectionHandle& connection, testing::Operation operation,
            StoreConnection::Access access, const Steps& steps) {
  const int refused = Refuse(connection, operation);
  return refused != 0 ? refused : InTurn(*connection, access, kWaitLimit, steps);
}

}  // namespace internal
}  // namespace DBStore
