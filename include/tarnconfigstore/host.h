// Where the host's files lie, and creating them.
#pragma once

#include "tarnconfigstore/export.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// Sets the directory that all fixed paths of the library are under. Until the first call it is the
/// environment variable TARN_HOST_ROOT, read once with secure_getenv(3), and else "/". Stores that
/// are open stay where they are. Thread-safe.
TARN_CONFIG_STORE_EXPORT void SetHostRoot(const std::string& root);

/// \return the directory, without a slash at its end; empty for "/". Thread-safe
TARN_CONFIG_STORE_EXPORT std::string GetHostRoot();

/// What InitializeHost created, and what it found.
struct HostInitialization {
  std::string storePath;               ///< path of the store, under the root
  std::string schemaStorePath;         ///< path of the schema store, under the root
  std::vector<std::string> created;    ///< files and directories that were created
  std::vector<std::string> unchanged;  ///< databases that were there
  std::vector<std::string> upgraded;   ///< databases whose tables an older library had made
};

/// Creates the directories, the store and the schema store under the root: directories with mode
/// 0755, databases with 0640. A store whose tables an older library made is brought over to those of
/// today, in one transaction, with everything that is in it; until then it is read and written as it
/// is. Older libraries refuse it from then on. Everything else that is there stays as it is.
///
/// No other call creates a database: a lost store is an error, never an empty store. Waits for other
/// writers, and for others who have the directory locked, for 3 seconds each. Thread-safe, and safe
/// from several processes.
/// \throws ConfigStoreException 2000 with the path and what is wrong with it. What was created by
///         then stays; a later call completes it
TARN_CONFIG_STORE_EXPORT HostInitialization InitializeHost();

}  // namespace TarnConfigStore
