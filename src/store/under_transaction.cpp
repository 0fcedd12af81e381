#include "store/under_transaction.h"

#include "tarnconfigstore/exceptions.h"

#include "errors/raise.h"

#include <exception>
#include <string>

namespace TarnConfigStore {

void RunUnderTransaction(const DBStore::ConnectionHandle& connection, const char* name,
                         const std::function<void()>& steps) {
  if (DBStore::BeginTransaction(connection) != 0) {
    ThrowFailure(std::string("Begin Transaction failed for: ") + name);
  }
  try {
    steps();
    if (DBStore::CommitTransaction(connection) != 0) {
      ThrowFailure("Commit transaction failed.");
    }
  } catch (const ConfigStoreException&) {
    DBStore::CancelTransaction(connection);
    throw;
  } catch (const std::exception& failure) {
    DBStore::CancelTransaction(connection);
    ThrowFailure(std::string("Operation failed: ") + failure.what());
  }
}

}  // namespace TarnConfigStore
