// The locks of the process's view of the schema store.
#pragma once

#include <mutex>
#include <shared_mutex>

namespace TarnSchemaStore {

/// Taken in the order of their declaration. A fork waits for them, so that the child never finds one held by
/// a thread that it does not have, nor a database half open.
struct SchemaLocks {
  std::mutex database;          ///< held while the schema store is read
  std::shared_mutex current;    ///< guards which InstalledTypes is the current one
  std::shared_mutex types;      ///< guards what the InstalledTypes hold

  static SchemaLocks& Get();
};

}  // namespace TarnSchemaStore
