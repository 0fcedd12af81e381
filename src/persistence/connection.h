// Connections to the current store.
#pragma once

#include "platform/db_store.h"

namespace TarnConfigStore {

/// A connection from the database layer. Where there is none, raises ConfigStoreException 2000
/// "Failed to connect to database", or returns an empty pointer when told not to throw.
DBStore::ConnectionHandle GetDBStore(DBStore::Type type, bool throwOnFailure);

}  // namespace TarnConfigStore
