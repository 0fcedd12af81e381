#include "db/connection_pool.h"

#include "platform/host_paths.h"
#include "platform/logger.h"

#include "db/last_error.h"
#include "db/layout.h"
#include "db/open_databases.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

#include <algorithm>
#include <pthread.h>
#include <utility>

namespace DBStore {
namespace internal {
namespace {

unsigned NumberOfThread() noexcept {
  static std::atomic<unsigned> threads{0};
  thread_local const unsigned number = ++threads;
  return number;
}

}  // namespace

ConnectionPool& ConnectionPool::Instance() {
  // Leaked: connections come back even while the process exits. Those idle then are closed.
  static ConnectionPool& pool = *new ConnectionPool;
  static const struct AtExit {
    ~AtExit() { pool.CloseIdle(); }
  } atExit;
  return pool;
}

ConnectionPool::ConnectionPool() {
  // Connections come back without a need for memory.
  idle_.reserve(kMaxIdle);
  // Handlers that come last run first: the pool may log while it prepares a fork, so the logger,
  // which closes for the fork too, has to be there before it.
  CSLogger::IsEnabled(0);
  pthread_atfork([] { Instance().PrepareFork(); }, [] { Instance().ResumeInParent(); },
                 [] { Instance().ResumeInChild(); });
}

ConnectionHandle ConnectionPool::Take(bool writable) {
  if (!LeaveInheritanceBehind()) {
    ReportFailure(
        ErrorKind::MISUSE, SQLITE_MISUSE,
        std::string(CurrentStoreLayout().fixedPath) +
            ": the process was forked in the middle of a transaction or statement; use the "
            "store before or after the fork, or replace the child's program");
    return nullptr;
  }
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
    const std::lock_guard<std::mutex> guard(lock_);
    inUse_.push_back(connection.get());
  }
  return Lend(std::move(connection));
}

std::unique_ptr<StoreConnection> ConnectionPool::TakeIdle(bool writable) {
  const std::lock_guard<std::mutex> guard(lock_);
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
    const std::lock_guard<std::mutex> guard(lock_);
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
  const std::lock_guard<std::mutex> guard(lock_);
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
    const std::lock_guard<std::mutex> guard(lock_);
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

void ConnectionPool::WriteBegun(const StoreConnection& connection) {
  const std::lock_guard<std::mutex> guard(lock_);
  writers_.push_back({&connection, NumberOfThread()});
  writerCount_.store(writers_.size(), std::memory_order_relaxed);
}

void ConnectionPool::WriteEnded(const StoreConnection& connection) noexcept {
  const std::lock_guard<std::mutex> guard(lock_);
  std::erase_if(writers_,
                [&connection](const Writer& writer) { return writer.connection == &connection; });
  writerCount_.store(writers_.size(), std::memory_order_relaxed);
}

bool ConnectionPool::ThisThreadWritesBeside(const StoreConnection& connection) {
  // This thread sees at least what it did itself.
  if (writerCount_.load(std::memory_order_relaxed) == 0) {
    return false;
  }
  const std::lock_guard<std::mutex> guard(lock_);
  return std::any_of(writers_.begin(), writers_.end(), [&connection](const Writer& writer) {
    return writer.connection != &connection && writer.thread == NumberOfThread() &&
           writer.connection->Identity().IsSameFile(connection.Identity());
  });
}

// Opening a connection of the child's own beside one that it inherited would leave it without
// locks.
bool ConnectionPool::LeaveInheritanceBehind() {
  const std::lock_guard<std::mutex> guard(lock_);
  if (inheritance_ && !forkedMidway_) {
    for (StoreConnection* connection : inUse_) {
      if (connection->IsInherited()) {
        connection->CloseUnshared();
      }
    }
    std::erase_if(inUse_,
                  [](const StoreConnection* connection) { return connection->IsInherited(); });
    inheritance_ = false;
  }
  return !forkedMidway_;
}

void ConnectionPool::GiveBackInherited(std::unique_ptr<StoreConnection> connection) noexcept {
  const std::lock_guard<std::mutex> guard(lock_);
  if (connection->WasAtRest() && !forkedMidway_) {
    Forget(connection.get());
    return;
  }
  // Its database stays open and untouched.
  static_cast<void>(connection.release());
}

void ConnectionPool::PrepareFork() noexcept {
  lock_.lock();
  CloseIdleLocked();
  OpenDatabases::Hold();
  std::size_t own = 0;
  bool atRest = true;
  for (StoreConnection* connection : inUse_) {
    connection->PauseForFork();
    atRest = atRest && connection->WasAtRest();
    own += connection->WasAtRest() && connection->IsOpen() ? 1U : 0U;
  }
  // Any other open database is being opened, closed or used by another thread at the moment.
  childIsRefused_ = !atRest || OpenDatabases::Count() != own;
}

void ConnectionPool::ResumeInParent() noexcept {
  for (StoreConnection* connection : inUse_) {
    connection->ResumeAfterFork();
  }
  OpenDatabases::Release();
  lock_.unlock();
}

void ConnectionPool::ResumeInChild() noexcept {
  forkGeneration.fetch_add(1, std::memory_order_relaxed);
  inheritance_ = !inUse_.empty();
  forkedMidway_ = forkedMidway_ || childIsRefused_;
  writers_.clear();
  writerCount_.store(0, std::memory_order_relaxed);
  ResumeInParent();
}

}  // namespace internal

ConnectionHandle GetConnection(Type type, bool writable) {
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
