// Telling the management daemon of changes.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

namespace TarnConfigStore {

/// Announces a change of an object to the management daemon, if it asked for it. Never throws, and
/// no failure of it ever reaches the caller. Nobody is told of anything yet.
/// \param connection  the store's, on which the switch is read
void NotifyIfAllowlisted(const ConfigStoreObjectId& id,
                         const DBStore::ConnectionHandle& connection) noexcept;

}  // namespace TarnConfigStore
