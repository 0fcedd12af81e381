#include "persistence/connection.h"

#include "errors/raise.h"

namespace TarnConfigStore {

DBStore::ConnectionHandle GetDBStore(DBStore::Type type, bool throwOnFailure) {
  DBStore::ConnectionHandle connection = DBStore::GetConnection(type, true);
  if (!connection && throwOnFailure) {
    ThrowFailure("Failed to connect to database");
  }
  return connection;
}

}  // namespace TarnConfigStore
