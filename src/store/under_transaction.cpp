#include "store/under_transaction.h"

#include "errors/raise.h"

#include <exception>
#include <string>

namespace TarnConfigStore {
namespace {

template <class Begin, class Commit, class Cancel>
void Run(const DBStore::ConnectionHandle& connection, const char* name,
         const std::function<void()>& steps, Begin begin, Commit commit, Cancel cancel) {
  const DBStore::Turn turn(connection);
  if (begin() != 0) {
    ThrowFailure(std::string("Begin Transaction failed for: ") + name);
  }
  try {
    steps();
    if (commit() != 0) {
      ThrowFailure("Commit transaction failed.");
    }
  } catch (const ConfigStoreException&) {
    cancel();
    throw;
  } catch (const std::exception& failure) {
    cancel();
    ThrowFailure(std::string("Operation failed: ") + failure.what());
  }
}

}  // namespace

void RunUnderTransaction(const DBStore::ConnectionHandle& connection, const char* name,
                         const std::function<void()>& steps) {
  Run(
      connection, name, steps, [&] { return DBStore::BeginTransaction(connection); },
      [&] { return DBStore::CommitTransaction(connection); },
      [&] { DBStore::CancelTransaction(connection); });
}

void RunUnderTransaction(ConfigStore& store, const DBStore::ConnectionHandle& connection,
                         const char* name, const std::function<void()>& steps) {
  Run(
      connection, name, steps, [&] { return store.BeginTransaction(); },
      [&] { return store.CommitTransaction(); }, [&] { store.CancelTransaction(); });
}

}  // namespace TarnConfigStore
