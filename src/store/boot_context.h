// Who may write while the host boots.
#pragma once

#include "tarnconfigstore/contexts.h"

#include "platform/db_store.h"

#include "validation/guards.h"

namespace TarnConfigStore {

/// True when the host boots and the type is not accessible during boot: user data may then be
/// written by automatic configuration only. Raises ConfigStoreException 2000 when the boot state
/// cannot be read.
bool IsClosedDuringBoot(const SchemaHandle& schema, const DBStore::ConnectionHandle& connection);

/// Changes are staged while the host runs only: raises ValidationException 2000 while it boots or is
/// upgraded, and ConfigStoreException 2000 when that cannot be read.
void RequireNextBootStore(const DBStore::ConnectionHandle& connection);

/// Applies checkUserContext to an object that is about to be written, if it holds user data and its
/// type is closed during boot.
void CheckBootTimeContext(const SchemaHandle& schema, const ObjectHandle& object,
                          const USERDATA_CONTEXT& context,
                          const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
