// Confirming or dropping what was pending, after the boot.
#pragma once

#include "platform/db_store.h"

#include "persistence/row_objects.h"

#include <functional>

namespace TarnConfigStore {

// Neither counts as a write of a row. Both raise ConfigStoreException 2000 with the text named.

/// Makes the pending values of an instance or, without an instance id, of all rows of a type
/// current, and confirms the rows; or drops the pending values, and leaves the rest. Without a row
/// nothing is done. "SetBootStatus: Failed to mark success status for given csoId." or
/// "DeleteDesiredValue: Failed to delete DesiredValue for given csoId.".
void SetBootStatusInternal(const ConfigStoreObjectId& id, bool status,
                           const DBStore::ConnectionHandle& connection);

/// The same for all rows of all types that are shared with a SmartNIC. The schema store has to be
/// attached.
void SetSharedBootStatusInternal(bool status, const DBStore::ConnectionHandle& connection);

/// Makes the schema store's tables visible under "ss" for as long as it lives. Raises
/// ConfigStoreException 2000 "Failed to attach schema store".
class AttachedSchemaStore {
 public:
  explicit AttachedSchemaStore(DBStore::ConnectionHandle connection);
  ~AttachedSchemaStore();
  AttachedSchemaStore(const AttachedSchemaStore&) = delete;
  AttachedSchemaStore& operator=(const AttachedSchemaStore&) = delete;

 private:
  DBStore::ConnectionHandle connection_;
};

/// Lays an object's data, which are part of the row's pending value or, where nothing waits, of the
/// user's, over the user's value, drops the pending value and confirms the row. Elements that the
/// store has given ids are found by what is given of them. The caller holds the transaction: what is
/// read has to be there still when it is written. "desired config is empty" when the row has neither
/// value, "partial config being restored is not part of desired config", "Get failed: IDENTIFIER",
/// or as SetBootStatusInternal.
/// \param judge  gets what the row will then show, and raises to keep it from being written
void SetPartialBootStatusInternal(const ObjectHandle& object, const SchemaHandle& schema,
                                  const DBStore::ConnectionHandle& connection,
                                  const std::function<void(const ObjectHandle&)>& judge);

}  // namespace TarnConfigStore
