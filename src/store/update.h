// Changing some members of a stored object.
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/contexts.h"

#include "platform/db_store.h"

#include "store/removals.h"
#include "validation/guards.h"

namespace TarnConfigStore {

/// Divides an object's data and lays each part over the stored value of its kind, from which what
/// the update takes away is gone; values that get no part and lose nothing keep their text. The
/// object that comes out is checked as a whole before it is written, and before other programs have
/// to wait for it: what was read is compared with what the row holds once they do, and checked anew
/// where it changed. Runs in a transaction of its own unless one is open.
/// Raises ValidationException 1090 with every finding, also where a part that is not the caller's
/// to change still holds what is to be taken away, or nothing would be left; and what the reader
/// and the writer raise. The row is then as it was.
/// \param removals  collected from the object as it was given; the object no longer holds the nulls
void UpdateInternal(ConfigStore& store, const ObjectHandle& object, const Removals& removals,
                    const SchemaHandle& schema, const USERDATA_CONTEXT& context,
                    const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
