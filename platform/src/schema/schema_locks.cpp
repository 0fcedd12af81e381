#include "schema/schema_locks.h"

#include <pthread.h>

namespace TarnSchemaStore {
namespace {

void LockAll() {
  SchemaLocks& locks = SchemaLocks::Get();
  locks.database.lock();
  locks.current.lock();
  locks.types.lock();
}

void UnlockAll() {
  SchemaLocks& locks = SchemaLocks::Get();
  locks.types.unlock();
  locks.current.unlock();
  locks.database.unlock();
}

}  // namespace

SchemaLocks& SchemaLocks::Get() {
  // Never destroyed: other threads may still ask for types while the process exits.
  static SchemaLocks& locks = *[] {
    auto* made = new SchemaLocks;
    pthread_atfork(LockAll, UnlockAll, UnlockAll);
    return made;
  }();
  return locks;
}

}  // namespace TarnSchemaStore
