// When a connection may answer from what it holds.
#include "db/store_connection.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

#include <atomic>
#include <exception>
#include <utility>

namespace DBStore {
namespace {

std::atomic<bool> holding{true};

}  // namespace

void SetRowHolding(bool hold) noexcept {
  holding.store(hold, std::memory_order_relaxed);
}

// What was written within a transaction has no number yet, and what a statement reads that has begun
// is of its beginning.
bool StoreConnection::IsBetweenOperations() const noexcept {
  return depth_ == 0 && executing_ == 0 && !opensAnew_ && !broken_ && IsOpen() &&
         sqlite3_get_autocommit(file_.handle.get()) != 0;
}

MadeOfRow StoreConnection::FindHeld(const RowQuery& query) noexcept try {
  if (held_.IsEmpty()) {
    return nullptr;
  }
  const Guard guard(lock_);
  if (!holding.load(std::memory_order_relaxed)) {
    held_.Clear();
    return nullptr;
  }
  if (!IsBetweenOperations() || CheckFileOnceInATick("reading") != SQLITE_OK) {
    return nullptr;
  }
  return held_.Find(file_.handle.get(), query);
} catch (const std::exception&) {
  return nullptr;  // nor is there memory to look at the file
}

bool StoreConnection::IsWorthHolding(const RowQuery& query) noexcept {
  if (!holding.load(std::memory_order_relaxed)) {
    return false;
  }
  const Guard guard(lock_);
  return IsBetweenOperations() && held_.NoteRead(file_.handle.get(), query);
}

void StoreConnection::Hold(const RowQuery& query, MadeOfRow made, std::size_t size) noexcept try {
  const Guard guard(lock_);
  if (IsBetweenOperations()) {
    held_.Hold(query, std::move(made), size);
  }
} catch (const std::exception&) {
  // Without memory, the row is read again.
}

namespace {

// A test that lets statements fail wants them to be run.
StoreConnection* MayHold(const ConnectionHandle& connection) noexcept {
  const bool may = connection && !connection->IsInherited() &&
                   !internal::hookIsSet.load(std::memory_order_relaxed);
  return may ? connection.get() : nullptr;
}

}  // namespace

MadeOfRow FindHeld(const ConnectionHandle& connection, const RowQuery& query) noexcept {
  StoreConnection* const holder = MayHold(connection);
  return holder == nullptr ? nullptr : holder->FindHeld(query);
}

bool IsWorthHolding(const ConnectionHandle& connection, const RowQuery& query) noexcept {
  StoreConnection* const holder = MayHold(connection);
  return holder != nullptr && holder->IsWorthHolding(query);
}

void Hold(const ConnectionHandle& connection, const RowQuery& query, MadeOfRow made,
          std::size_t size) noexcept {
  if (StoreConnection* const holder = MayHold(connection)) {
    holder->Hold(query, std::move(made), size);
  }
}

}  // namespace DBStore
