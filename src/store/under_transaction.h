// Running steps so that either all of them take effect or none.
#pragma once

#include "tarnconfigstore/config_store.h"

#include "platform/db_store.h"

#include <functional>

namespace TarnConfigStore {

/// Begins a transaction on the connection, runs the steps, and commits. A ConfigStoreException of
/// the steps, or a failed commit ("Commit transaction failed."), cancels the transaction and passes
/// on unchanged; any other standard exception cancels it and becomes ConfigStoreException 2000
/// "Operation failed: TEXT". A begin that fails raises ConfigStoreException 2000 "Begin Transaction
/// failed for: NAME" and cancels nothing. Other threads' calls on the connection wait meanwhile.
void RunUnderTransaction(const DBStore::ConnectionHandle& connection, const char* name,
                         const std::function<void()>& steps);

/// The same in a transaction of a store on its connection, through the store's own operations: a database layer that
/// refuses to cancel is fatal there.
void RunUnderTransaction(ConfigStore& store, const DBStore::ConnectionHandle& connection,
                         const char* name, const std::function<void()>& steps);

}  // namespace TarnConfigStore
