// Looking at what is stored, and at what waits for the next boot.
#pragma once

#include "tarnconfigstore/export.h"
#include "tarnconfigstore/next_boot_store.h"
#include "tarnconfigstore/object_id.h"

#include <cstdint>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// One stored object, without its data.
struct StoredObject {
  ConfigStoreObjectId id;
  std::string version;       ///< version of the type's schema at the last write
  std::string creationTime;  ///< UTC, "YYYY-MM-DD HH:MM:SS"
  std::string modifiedTime;  ///< UTC, "YYYY-MM-DD HH:MM:SS"
  std::int32_t revision = kDefaultRevision;
  bool confirmed = true;  ///< false after a write during an upgrade that nobody has confirmed yet
  bool hasUser = false;
  bool hasAutomatic = false;
  bool hasVital = false;
  bool hasCached = false;
  bool hasPending = false;  ///< a value waits for the next boot
};

/// Everything that is stored under a prefix, sorted by component, group, key and instance id. Rows
/// that hold no value of any kind are left out.
/// \param prefix  fields are compared in the order
/// component, group, key, instance id up to the first empty
///                one; all empty: the whole store
/// Raises ConfigStoreException 2000 "Failed to connect to database" or "Get store rows failed.".
TARN_CONFIG_STORE_EXPORT std::vector<StoredObject> ListStored(const ConfigStoreObjectId& prefix);

/// One change that is staged in the next-boot store, without its data.
struct StagedChange {
  ConfigStoreObjectId id;
  std::string version;  ///< version of the type's schema when it was staged
  NextBootAction action = NextBootAction::SET;
  bool hasUser = false;
  bool hasVital = false;
  bool hasCached = false;
};

/// Every change that is staged under a prefix, deletions among them, sorted and chosen as ListStored
/// does. Values that wait in rows of the current configuration are not changes of this kind: see
/// StoredObject::hasPending. Raises as ListStored.
TARN_CONFIG_STORE_EXPORT std::vector<StagedChange> ListStaged(const ConfigStoreObjectId& prefix);

}  // namespace TarnConfigStore
