// The locks of the process's view of the schema store.
#pragma once

#include <mutex>

namespace TarnSchemaStore {

/// Taken in the order of their declaration. A fork waits for them, so that the child never finds
/// one held by a thread that it does not have, nor a database half open. They are plain because no
/// other lock can be released by the child of a fork.
struct SchemaLocks {
  std::mutex administration;  ///< held while the schema store is written, or read as a whole
  std::mutex database;        ///< held while types are read for use
  std::mutex current;         ///< for a look-up: guards which UsedTypes is the current one
  std::mutex types;           ///< for a look-up: guards what the UsedTypes hold
  std::mutex registrations;   ///< held while the validator is told of a type that comes or goes

  static SchemaLocks& Get();
};

}  // namespace TarnSchemaStore
