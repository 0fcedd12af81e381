// Looking at what is stored.
#pragma once

#include "tarnconfigstore/export.h"
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

}  // namespace TarnConfigStore
