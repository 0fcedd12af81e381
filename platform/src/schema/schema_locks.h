// The locks of the process's view of the schema store.
#pragma once

#include <mutex>

namespace TarnSchemaStore {

/// Taken in the order of their declaration. A fork waits for them, so that the child never finds
/// one held by a thread that it does not have, nor a database half open. The last two are held for
/// a look-up only; they are plain because a lock for reading and writing cannot be released by the
/// child of a fork.
struct SchemaLocks {
  std::mutex database;  ///< held while the schema store is read
  std::mutex current;   ///< guards which InstalledTypes is the current one
  std::mutex types;     ///< guards what the InstalledTypes hold

  static SchemaLocks& Get();
};

}  // namespace TarnSchemaStore
