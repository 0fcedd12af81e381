#include "db/connection_pool.h"

#include "platform/host_paths.h"
#include "platform/made_once.h"
#include "platform/no_cancellation.h"

#include "db/last_error.h"
#include "db/layout.h"
#include "db/open_databases.h"
#include "db/testing_hook.h"
#include "db/write_queue.h"
#include "process/fork_hooks.h"

#include <sqlite3.h>

#include <algorithm>
#include <utility>

namespace DBStore {
namespace internal {
namespace {

using ProcessLocks::Guard;
using ProcessLocks::Rank;

constinit MadeOnce<ConnectionPool> thePool;

}  // namespace

ConnectionPool& ConnectionPool::Instance() {
  return thePool.Get();
}

// What happens when the process forks, and at its end. Connections come back even after that: the
// pool itself stays.
class ConnectionPool::Lifetime {
 public:
  Lifetime() noexcept {
    ProcessLocks::SetForkHooks(Rank::CONNECTION_POOL,
                               {.prepare = Call<&ConnectionPool::PrepareFork>,
                                .resumeInParent = Call<&ConnectionPool::ResumeInParent>,
                                .resumeInChild = ResumeInChild});
  }
  ~Lifetime() { Call<&ConnectionPool::CloseIdle>(); }

 private:
  template <void (ConnectionPool::*function)() noexcept>
  static void Call() noexcept {
    if (ConnectionPool* const pool = thePool.Find()) {
      (pool->*function)();
    }
  }
  static void ResumeInChild() noexcept {
    forkGeneration.fetch_add(1, std::memory_order_relaxed);
    Call<&ConnectionPool::ResumeInChild>();
  }
  static const Lifetime instance;
};
const ConnectionPool::Lifetime ConnectionPool::Lifetime::instance;

ConnectionPool::ConnectionPool() {
  // Connections come back without a need for memory.
  idle_.reserve(kMaxIdle);
}

ConnectionHandle ConnectionPool::Take(bool writable) {
  LeaveInheritanceBehind();
  while (std::unique_ptr<StoreConnection> connection = TakeIdle(writable)) {
    if (connection->IsCurrent()) {
      return Lend(std::move(connection));
    }
    Discard(std::move(connection));
  }

  const unsigned rootGeneration = HostPaths::RootGeneration();
  DatabaseFile file = OpenDatabase(CurrentStoreLayout(), writable);
  if (!file) {
    return nullptr;
  }
  auto connection = std::make_unique<StoreConnection>(std::move(file), writable, rootGeneration);
  {
    const Guard guard(Rank::CONNECTION_POOL);
    inUse_.push_back(connection.get());
  }
  return Lend(std::move(connection));
}

std::unique_ptr<StoreConnection> ConnectionPool::TakeIdle(bool writable) {
  const Guard guard(Rank::CONNECTION_POOL);
  const auto found = std::find_if(idle_.rbegin(), idle_.rend(), [writable](const auto& connection) {
    return connection->AsksForWriting() == writable;
  });
  if (found == idle_.rend()) {
    return nullptr;
  }
  inUse_.push_back(found->get());
  std::unique_ptr<StoreConnection> connection = std::move(*found);
  idle_.erase(std::next(found).base());
  return connection;
}

ConnectionHandle ConnectionPool::Lend(std::unique_ptr<StoreConnection> connection) {
  return ConnectionHandle(connection.release(),
                          [](StoreConnection* returned) { Instance().GiveBack(returned); });
}

void ConnectionPool::GiveBack(StoreConnection* returned) noexcept {
  std::unique_ptr<StoreConnection> connection(returned);
  if (connection->IsInherited()) {
    GiveBackInherited(std::move(connection));
    return;
  }
  if (connection->MakeReusable()) {
    const Guard guard(Rank::CONNECTION_POOL);
    if (idle_.size() < kMaxIdle) {
      Forget(connection.get());
      idle_.push_back(std::move(connection));
      return;
    }
  }
  Discard(std::move(connection));
}

void ConnectionPool::Discard(std::unique_ptr<StoreConnection> connection) noexcept {
  connection->Close();
  const Guard guard(Rank::CONNECTION_POOL);
  Forget(connection.get());
}

void ConnectionPool::Forget(const StoreConnection* connection) noexcept {
  const auto found = std::find(inUse_.begin(), inUse_.end(), connection);
  if (found != inUse_.end()) {
    *found = inUse_.back();
    inUse_.pop_back();
  }
}

void ConnectionPool::CloseIdle() noexcept {
  std::vector<std::unique_ptr<StoreConnection>> idle;
  {
    const Guard guard(Rank::CONNECTION_POOL);
    idle.swap(idle_);
  }
  for (const auto& connection : idle) {
    connection->Close();
  }
}

void ConnectionPool::CloseIdleLocked() noexcept {
  for (const auto& connection : idle_) {
    // Nobody else holds it, and its lock is never asked for under ours.
    connection->CloseUnshared();
  }
  idle_.clear();
}

// Opening a connection of the child's own beside one that it inherited would leave it without
// locks.
void ConnectionPool::LeaveInheritanceBehind() {
  const Guard guard(Rank::CONNECTION_POOL);
  if (inheritance_ && !OpenDatabases::AreOutOfReach()) {
    for (StoreConnection* connection : inUse_) {
      if (connection->IsInherited()) {
        connection->CloseUnshared();
      }
    }
    std::erase_if(inUse_,
                  [](const StoreConnection* connection) { return connection->IsInherited(); });
    inheritance_ = false;
  }
}

void ConnectionPool::GiveBackInherited(std::unique_ptr<StoreConnection> connection) noexcept {
  const Guard guard(Rank::CONNECTION_POOL);
  if (connection->WasAtRest() && !OpenDatabases::AreOutOfReach()) {
    Forget(connection.get());
    return;
  }
  // Its database stays open and untouched.
  static_cast<void>(connection.release());
}

void ConnectionPool::PrepareFork() noexcept {
  CloseIdleLocked();
  std::size_t atRest = 0;
  for (StoreConnection* connection : inUse_) {
    connection->PauseForFork();
    atRest += connection->WasAtRest() && connection->IsOpen() ? 1U : 0U;
  }
  OpenDatabases::NoteAtRest(atRest);
}

void ConnectionPool::ResumeInParent() noexcept {
  for (StoreConnection* connection : inUse_) {
    connection->ResumeAfterFork();
  }
}

void ConnectionPool::ResumeInChild() noexcept {
  inheritance_ = !inUse_.empty();
  WriteQueue::ForgetAll();
  ResumeInParent();
}

}  // namespace internal

ConnectionHandle GetConnection(Type type, bool writable) {
  const NoCancellation uncancelled;
  if (internal::AskHook(testing::Operation::GET_CONNECTION) != 0) {
    return nullptr;
  }
  if (type != Type::CURRENT_STORE) {
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE, "there is no such store");
    return nullptr;
  }
  return internal::ConnectionPool::Instance().Take(writable);
}

}  // namespace DBStore
