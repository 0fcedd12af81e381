// What the host says about its boot, and confirming the values that waited for it.
//
// Every function here that reads or writes the store takes a connection of its own. So it sees
// nothing of a transaction that is open on a store, and is no part of it. A write fails at once on
// a thread that holds such a transaction. A store that cannot be opened throws ConfigStoreException
// 2000 "Failed to connect to database", unless the function says otherwise. All are thread-safe.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/contexts.h"
#include "tarnconfigstore/export.h"

#include <memory>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// Reads the key/value entry "IS_BOOT".
/// \return true when it is "true": the host boots
/// \throws ConfigStoreException 2000 "Failed to read value from database.", also when the store
///         cannot be opened
TARN_CONFIG_STORE_EXPORT bool IsBoot();

/// Reads the kind of the boot from the key/value entry "BOOT_INFO", which holds a JSON object.
/// \return its member "type"; 0 when there is no such member
/// \throws ConfigStoreException 2000 "Failed to read BOOT_INFO database." when the entry is
///         missing, is no JSON, or cannot be read, also when the store cannot be opened
/// \throws ConfigStoreException 1082 when it is no object, or the member is no integer of 32 bits
TARN_CONFIG_STORE_EXPORT int GetBootInfo();

/// Reads the upgrade context, a decimal number, from a file of the host's. Reads it at each call.
/// \return 0 when no upgrade runs, 2 in the part of an upgrade whose writes are confirmed
///         afterwards; a missing file means 0
/// \throws ConfigStoreException 2000 with a message that says why, when there is a file that cannot
///         be read, is no regular file or holds anything but a decimal number. So does every
///         operation that needs to know: reads, writes of the user's value, updates
TARN_CONFIG_STORE_EXPORT int GetUpgradeContext();

/// Confirms the pending values of a type after a boot, or drops them. Revisions stay as they are,
/// and so do rows that nothing is pending or unconfirmed in.
/// \param csoId   an instance or, without an instance id, every row of the type. It need not be
///                stored, and the type need not be installed
/// \param status  true: each pending value replaces the user value, and the rows are confirmed,
///                unconfirmed ones among them. False: the pending values are removed; an
///                unconfirmed row stays unconfirmed and keeps its value
/// \throws ConfigStoreException 2000 "SetBootStatus: Failed to mark success status for given
///         csoId." or "DeleteDesiredValue: Failed to delete DesiredValue for given csoId."; nothing
///         is changed then
TARN_CONFIG_STORE_EXPORT void SetBootStatus(const ConfigStoreObjectId& csoId, bool status);

/// Confirms or drops the pending values of several objects or types in one transaction.
/// \param csoIds  each as in the function above
/// \throws as the function above, and ConfigStoreException 2000 for a transaction that could not
///         begin or commit; nothing is changed then, of any of them
TARN_CONFIG_STORE_EXPORT void SetBootStatus(const std::vector<ConfigStoreObjectId>& csoIds,
                                            bool status);

/// Confirms or drops the pending values of every type that is shared with a SmartNIC, in one
/// transaction.
/// \throws as the function above, and ConfigStoreException 2000 "Failed to attach schema store" when
///         the types cannot be read
TARN_CONFIG_STORE_EXPORT void SetSharedBootStatus(bool status);

/// Confirms a part of an object's desired value, which is the pending one or, where nothing is
/// pending, the user's, and drops the rest: the data is merged into the user value, the pending
/// value is removed, and the row is confirmed. The revision stays as it is. When the call throws,
/// the row is as it was.
/// \param object  data that is part of the desired value: members are equal, objects recursively,
///                and each element of a list is found. An element of a list that gets its ids from
///                the store is the one that it is found in. An empty handle, and an object without
///                data, are logged, and nothing is written
/// \throws ConfigStoreException 1037 when the type is not installed
/// \throws ValidationException 1088 with every finding, when the data does not fit the type, when
///         it holds vital or cached members, or when the object that comes out does not fit
/// \throws ConfigStoreException 2000 "desired config is empty" when the row has neither value
/// \throws ConfigStoreException 2000 "partial config being restored is not part of desired config"
/// \throws ConfigStoreException 2000 for a failure of the database
TARN_CONFIG_STORE_EXPORT void SetPartialBootStatus(std::shared_ptr<ConfigStoreObject> object);

/// Reads what is to take effect for one object: the pending value or, where the row is unconfirmed,
/// the user value.
/// \param flag  DESIRED_WITH_VITAL_AND_CACHED merges the cached and the vital value under it
/// \return the object; an empty pointer when there is none of these values
/// \throws ConfigStoreException 1037 when the type is not installed
/// \throws ValidationException 2000 when the instance id does not suit the type
/// \throws ConfigStoreException 2000 "Get failed: IDENTIFIER"
TARN_CONFIG_STORE_EXPORT std::shared_ptr<ConfigStoreObject> GetDesiredUserConfig(
    const ConfigStoreObjectId& csoId, FLAG flag);

/// Reads the same for all instances of a type.
/// \param csoId  names the type; its instance id is ignored
/// \return the objects, in the order of their instance ids
/// \throws ConfigStoreException 1037 when the type is not installed
/// \throws ValidationException 2000 when the type has no instances
/// \throws ConfigStoreException 2000 "Read Instances failed for: IDENTIFIER"
TARN_CONFIG_STORE_EXPORT std::vector<std::shared_ptr<ConfigStoreObject>>
GetDesiredUserConfigInstances(const ConfigStoreObjectId& csoId, FLAG flag);

/// Reads the version of an installed type.
/// \param csoId  names the type; its instance id is ignored
/// \return the version; an empty text, and a line in the log, when the type is not installed
/// \throws ConfigStoreException 2000 when the schema store cannot be read
TARN_CONFIG_STORE_EXPORT std::string GetSchemaVersion(const ConfigStoreObjectId& csoId);

}  // namespace TarnConfigStore
