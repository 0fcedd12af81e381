// Other views of what is stored than ConfigStore::Get has. All functions take a connection of their
// own, so they see nothing of a transaction that is open on a store, and are thread-safe.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/contexts.h"
#include "tarnconfigstore/export.h"

#include <memory>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// What GetConfigOfGroup read, and what it could not.
struct GroupConfig {
  std::vector<std::shared_ptr<ConfigStoreObject>> objects;
  /// Stored objects whose types are not installed. Nobody can read them until they are.
  std::vector<ConfigStoreObjectId> notInstalled;
  /// Stored objects that hold nothing but a user value which is not confirmed.
  std::vector<ConfigStoreObjectId> unconfirmed;
};

/// Reads all objects of a component, or of one of its groups: the confirmed view. A user value that
/// is not confirmed and a pending one do not count, during an upgrade as little as otherwise; in this
/// it differs from ConfigStore::Get, which sees them during one. All of it is read in one statement,
/// and so the store of one moment.
/// \param component  not empty
/// \param group      the empty text for all groups
/// \return the objects and the identifiers, each sorted by group, key and instance id; nothing where
///         nothing is stored
/// \throws InvalidArgumentException 2000 for an empty component, 1080 for a stored value that is no
///         JSON; the log names the row
/// \throws ConfigStoreException 2000 "Failed to connect to database" or "Get all keys failed", and
///         when the schema store cannot be read
TARN_CONFIG_STORE_EXPORT GroupConfig GetConfigOfGroup(const std::string& component,
                                                      const std::string& group = {});

/// Reads one object as a caller of a context sees it while the host boots.
///
/// Automatic configuration sees what it set itself, and nothing that others set over it. Everybody
/// else sees what ConfigStore::Get returns.
/// \return the object; an empty pointer when there is nothing to see
/// \throws ConfigStoreException 1037 when the type is not installed, 2000 when the store, the upgrade
///         context or "IS_BOOT" cannot be read
/// \throws ValidationException 2000 when the identifier does not suit its type
/// \throws InvalidArgumentException 1080 for a stored value that is no JSON
TARN_CONFIG_STORE_EXPORT std::shared_ptr<ConfigStoreObject> GetConfigDuringBoot(
    const ConfigStoreObjectId& csoId, const USERDATA_CONTEXT& context);

}  // namespace TarnConfigStore
