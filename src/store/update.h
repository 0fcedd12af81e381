// Changing some members of a stored object.
#pragma once

#include "tarnconfigstore/contexts.h"

#include "platform/db_store.h"

#include "validation/guards.h"

namespace TarnConfigStore {

/// Divides an object's data and lays each part over the stored value of its kind; values that get
/// no part keep their text. The object that comes out is checked as a whole before it is written.
/// Raises ValidationException 1090 with every finding, and what the reader and the writer raise.
/// The caller holds the transaction.
void UpdateInternal(const ObjectHandle& object, const SchemaHandle& schema,
                    const USERDATA_CONTEXT& context, const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
