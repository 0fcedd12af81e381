#include "schema/schema_locks.h"

#include "db/connection_pool.h"
#include "json_schema/schema_registry.h"

#include <pthread.h>

namespace TarnSchemaStore {
namespace {

void LockAll() {
  SchemaLocks& locks = SchemaLocks::Get();
  locks.administration.lock();
  locks.database.lock();
  locks.current.lock();
  locks.types.lock();
  locks.registrations.lock();
}

void UnlockAll() {
  SchemaLocks& locks = SchemaLocks::Get();
  locks.registrations.unlock();
  locks.types.unlock();
  locks.current.unlock();
  locks.database.unlock();
  locks.administration.unlock();
}

}  // namespace

SchemaLocks& SchemaLocks::Get() {
  // Never destroyed: other threads may still ask for types while the process exits.
  static SchemaLocks& locks = *[] {
    auto* made = new SchemaLocks;
    // The handlers that come last run first. Whoever holds one of these locks may be about to enter
    // the database layer or the validator, so a fork has to wait for them before those close their
    // doors.
    DBStore::internal::ConnectionPool::Instance();
    JsonValidator::SchemaRegistry::Instance();
    pthread_atfork(LockAll, UnlockAll, UnlockAll);
    return made;
  }();
  return locks;
}

}  // namespace TarnSchemaStore
