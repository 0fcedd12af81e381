// Where the host's files lie, and making them for the first time.
#pragma once

#include "tarnconfigstore/export.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// Puts all fixed paths of the library under a directory other than "/". Without a call, the
/// environment variable TARN_HOST_ROOT decides, which is read once and never in a set-user-id
/// program. Stores that are open stay where they are. Thread-safe.
TARN_CONFIG_STORE_EXPORT void SetHostRoot(const std::string& root);

/// The directory in force, without a trailing slash; empty for "/".
TARN_CONFIG_STORE_EXPORT std::string GetHostRoot();

/// What InitializeHost made and what it found.
struct HostInitialization {
  std::string storePath;               ///< where the store lies, the root included
  std::string schemaStorePath;         ///< where the types lie
  std::vector<std::string> created;    ///< files and directories that were made
  std::vector<std::string> unchanged;  ///< databases that were there already
};

/// Makes the directories, the store and the schema store under the root, with modes that let no
/// other user write (directories 0755, files 0640). What exists already is left as it is. No other
/// call of the library ever makes a database: a lost store is an error, never an empty store.
/// Raises ConfigStoreException 2000 with a message that names the path and what is wrong with it;
/// what had been made by then stays and a later call goes on from there.
TARN_CONFIG_STORE_EXPORT HostInitialization InitializeHost();

}  // namespace TarnConfigStore
