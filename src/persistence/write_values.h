// Writing one value of objects: the user's, the automatic, the cached or the vital one.
#pragma once

#include "platform/db_store.h"

#include "persistence/row_objects.h"

#include <vector>

namespace TarnConfigStore {

/// Whether rows of a type whose user's value is written are confirmed at once: in one part of an upgrade
/// they are left to be confirmed afterwards.
/// \param always          they are confirmed even then
/// \param upgradeContext  what ReadUpgradeContext answered
bool AreConfirmedAtOnce(bool always, int upgradeContext) noexcept;

// Each writes the data of every object, whole, into one value column of its row; the objects have
// been validated as data of that kind. The version is that of the schema that the caller holds for
// the type of all objects, or without one that of each object's type at this moment. What was
// written before a failure is the caller's transaction's to undo.

/// The user value; a pending value of the row goes. Raises ConfigStoreException 2000 "Write user
/// data failed".
/// \param confirmed  the rows are confirmed even in the part of an upgrade (upgrade context 2) that
///                   leaves rows to be confirmed afterwards
void WriteUserConfigInstances(const std::vector<ObjectHandle>& objects,
                              const DBStore::ConnectionHandle& connection, bool confirmed,
                              const SchemaHandle& schema = nullptr);

/// One of the others; everything else of the row stays. Raise ConfigStoreException 2000 "Write
/// config instances failed".
void WriteCachedConfigInstances(const std::vector<ObjectHandle>& objects,
                                const DBStore::ConnectionHandle& connection,
                                const SchemaHandle& schema = nullptr);
void WriteVitalConfigInstances(const std::vector<ObjectHandle>& objects,
                               const DBStore::ConnectionHandle& connection,
                               const SchemaHandle& schema = nullptr);
void WriteAutoConfConfigInstances(const std::vector<ObjectHandle>& objects,
                                  const DBStore::ConnectionHandle& connection,
                                  const SchemaHandle& schema = nullptr);

}  // namespace TarnConfigStore
