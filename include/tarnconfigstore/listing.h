// What is stored, and what is staged for the next boot. All functions take a connection of their own
// and are thread-safe.
#pragma once

#include "tarnconfigstore/export.h"
#include "tarnconfigstore/next_boot_store.h"
#include "tarnconfigstore/object_id.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// One stored object, without its data.
struct StoredObject {
  ConfigStoreObjectId id;
  std::string version;       ///< version of the type at the last write
  std::string creationTime;  ///< UTC, "YYYY-MM-DD HH:MM:SS"
  std::string modifiedTime;  ///< UTC, "YYYY-MM-DD HH:MM:SS"
  std::int32_t revision = kDefaultRevision;
  bool confirmed = true;  ///< false for a write during an upgrade that is not confirmed yet
  bool hasUser = false;
  bool hasAutomatic = false;
  bool hasVital = false;
  bool hasCached = false;
  bool hasPending = false;  ///< a user value waits for the next boot
};

/// Lists what is stored. Rows without any value are left out.
/// \param prefix  component, group, key and instance id are compared in this order, up to the first
///                empty one; with all of them empty, the whole store is listed
/// \return the objects, sorted by component, group, key and instance id
/// \throws ConfigStoreException 2000 "Failed to connect to database" or "Get store rows failed."
TARN_CONFIG_STORE_EXPORT std::vector<StoredObject> ListStored(const ConfigStoreObjectId& prefix);

/// Hands what ListStored lists on, one object after the other and in the same order, without holding
/// the others. What it lists is the store of one moment, whatever is written meanwhile.
/// \param visit  called on this thread. What it throws ends the listing and passes through; it may
///               use the library, but a long stay keeps the database's log from being shortened
/// \throws ConfigStoreException 2000 "Failed to connect to database" or "Get store rows failed.", the
///         latter perhaps after objects were handed on
TARN_CONFIG_STORE_EXPORT void VisitStored(const ConfigStoreObjectId& prefix,
                                          const std::function<void(StoredObject)>& visit);

/// A stored object that was last written under another version of its type than the installed one.
struct OutdatedObject {
  StoredObject stored;
  std::string installedVersion;
};

/// What ListStored lists, as far as it is outdated. Objects whose types are not installed are not
/// among it. Versions are compared number by number, as installing does. Raises as ListStored, and
/// ConfigStoreException 2000 when the schema store cannot be read.
TARN_CONFIG_STORE_EXPORT std::vector<OutdatedObject> ListOutdated(
    const ConfigStoreObjectId& prefix);

/// One change that is staged in the next-boot store, without its data.
struct StagedChange {
  ConfigStoreObjectId id;
  std::string version;  ///< version of the type when the change was staged
  NextBootAction action = NextBootAction::SET;
  bool hasUser = false;
  bool hasVital = false;
  bool hasCached = false;
};

/// Lists what is staged, deletions included. Pending values of rows are not staged changes: see
/// StoredObject::hasPending.
/// \param prefix  as for ListStored
/// \return the changes, sorted by component, group, key and instance id
/// \throws ConfigStoreException 2000 "Failed to connect to database" or "Get store rows failed."
TARN_CONFIG_STORE_EXPORT std::vector<StagedChange> ListStaged(const ConfigStoreObjectId& prefix);

}  // namespace TarnConfigStore
