// What the host says about its boot, and what became of the changes that waited for it.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/contexts.h"
#include "tarnconfigstore/export.h"

#include <memory>
#include <string>
#include <vector>

namespace TarnConfigStore {

// All of these take a connection of their own for the call, so they see nothing of a transaction
// that a caller holds on a store, and are no part of it. Those that write fail at once on a thread
// that holds such a transaction itself; GetLastStoreError (diagnostics.h) says so. A store that
// cannot be opened raises ConfigStoreException 2000 "Failed to connect to database", or what the
// function raises when it cannot read. Thread-safe.

/// True exactly while the key/value entry "IS_BOOT" holds "true". Read from the store at every
/// call. Raises ConfigStoreException 2000 "Failed to read value from database." when the store
/// cannot be read.
TARN_CONFIG_STORE_EXPORT bool IsBoot();

/// The kind of the host's boot: the member "type" of the key/value entry "BOOT_INFO", which holds a
/// JSON object; 0 when it has no such member. Raises ConfigStoreException 2000 "Failed to read
/// BOOT_INFO database." when the entry cannot be read, is missing, or is not JSON, and 1082 when it
/// is no object or the member no integer (of 32 bits).
TARN_CONFIG_STORE_EXPORT int GetBootInfo();

/// What the host says about its upgrade, a number: 0 while none runs, 2 in the part of one that leaves
/// what is written to be confirmed afterwards. Reads a file of the host's at each call; one that is
/// not there, or holds no number (which is logged), means 0.
TARN_CONFIG_STORE_EXPORT int GetUpgradeContext();

/// Tells the store that the host runs with the pending values of a type, or that it does not.
/// \param csoId   one instance or, without an instance id, every row of the type. Neither has to be
/// there, and the type need not be installed
/// \param status  true: each pending value becomes the user's, and the rows are confirmed, those
/// among them that an upgrade left to be confirmed. False: the pending values are dropped; a row
/// that waits to be confirmed goes on waiting, with the value it has
/// Neither counts as a write: revisions stay. Rows that nothing waits in are not touched. Raises
/// ConfigStoreException 2000 "SetBootStatus: Failed to mark success status for given csoId." or
/// "DeleteDesiredValue: Failed to delete DesiredValue for given csoId."; nothing is changed then.
TARN_CONFIG_STORE_EXPORT void SetBootStatus(const ConfigStoreObjectId& csoId, bool status);

/// The same for several in one transaction: all of them or, when it throws, none.
TARN_CONFIG_STORE_EXPORT void SetBootStatus(const std::vector<ConfigStoreObjectId>& csoIds,
                                            bool status);

/// The same for every row of every type that is shared with a SmartNIC, in one transaction. Throws
/// ConfigStoreException 2000 also with "Failed to attach schema store", when the types cannot be
/// read.
TARN_CONFIG_STORE_EXPORT void SetSharedBootStatus(bool status);

/// Confirms a part of an object's desired value, which is the pending one or, where nothing waits,
/// the user's, and drops the rest: the data, which has to be part of it (members equal, objects
/// recursively, each element of a list found in the other), is laid over the user's value, the
/// pending value goes, and the row is confirmed. An element of a list whose identifiers the store
/// gives is the one that it is found in. Does not count as a write. An empty handle, and an object
/// without data, are logged and nothing is done. Throws ConfigStoreException 1037 when the type is
/// not installed, ValidationException 1088 with every finding when the data does not fit the type or
/// holds vital or cached members, or when the object that comes out does not fit, and
/// ConfigStoreException 2000 "desired config is empty" when the row has neither value, "partial
/// config being restored is not part of desired config" when something else is desired, or what the
/// database's failure gives; the row is then as it was.
TARN_CONFIG_STORE_EXPORT void SetPartialBootStatus(std::shared_ptr<ConfigStoreObject> object);

// What is to take effect, as far as rows of current configuration hold it: the pending value of a
// row, or, of a row that an upgrade left to be confirmed, the user's. Both raise
// ConfigStoreException 1037 when the type is not installed and ValidationException 2000 when the
// identifier does not suit the type.

/// One object; an empty pointer when it has nothing of the kind. Raises ConfigStoreException 2000
/// "Get failed: IDENTIFIER".
/// \param flag  DESIRED_WITH_VITAL_AND_CACHED merges the row's cached and vital values under it; an
/// object that has nothing but those is returned too
TARN_CONFIG_STORE_EXPORT std::shared_ptr<ConfigStoreObject> GetDesiredUserConfig(
    const ConfigStoreObjectId& csoId, FLAG flag);

/// The same for all instances of a type that has instances, in the order of their ids, whatever the
/// identifier's instance id. Raises ConfigStoreException 2000 "Read Instances failed for:
/// IDENTIFIER".
TARN_CONFIG_STORE_EXPORT std::vector<std::shared_ptr<ConfigStoreObject>>
GetDesiredUserConfigInstances(const ConfigStoreObjectId& csoId, FLAG flag);

/// Version of an installed type's schema; an empty text, after a log line, when the type is not
/// installed. The instance id does not matter. Raises ConfigStoreException 2000 when the schema
/// store cannot be read.
TARN_CONFIG_STORE_EXPORT std::string GetSchemaVersion(const ConfigStoreObjectId& csoId);

}  // namespace TarnConfigStore
