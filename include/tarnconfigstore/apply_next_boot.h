// Applying the changes that were staged for the next boot.
#pragma once

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/next_boot_store.h"
#include "tarnconfigstore/object_id.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// What ApplyNextBootConfig does with changes that do not fit their types.
struct ApplyOptions {
  bool applyRest = false;  ///< applies the others all the same; else nothing is applied

  /// What the key/value entry "BOOT_MODE" gets, in the same transaction, when nothing stays staged;
  /// empty: it stays as it is. Only the process that boots the host knows what it should be.
  std::string bootModeWhenDone = {};
};

/// A change that was applied. It is no longer staged.
struct AppliedChange {
  ConfigStoreObjectId id;
  NextBootAction action;
};

/// A change that stays staged.
struct UnappliedChange {
  ConfigStoreObjectId id;
  NextBootAction action;
  /// Why it does not fit its type; empty when it fits, and only the others do not.
  std::vector<ErrorInfo> findings;
};

/// The outcome. Both lists are sorted by component, group, key and instance id.
struct ApplyResult {
  std::vector<AppliedChange> applied;
  std::vector<UnappliedChange> staged;
};

/// Applies what is staged in the next-boot store to the current configuration. For the process that
/// boots the host.
///
/// Everything happens in one transaction, on a connection of its own. A process that dies in the
/// middle has applied nothing, and no change is ever applied twice. Where nothing is staged, the
/// result is empty. When the call throws, nothing is applied. Thread-safe.
///
/// - SET checks the content against the type that is installed now. Content that does not fit, a
///   type that is not installed, and an instance id that does not suit the type are findings, as
///   ConfigStore::Validate returns them, and the change stays staged. Else what is
///   staged replaces the user, the vital and the cached value, divided among them by today's type;
///   a value that gets nothing becomes empty.
///   The automatic value and the creation time stay, the pending value is removed, the row is
///   confirmed, and the revision counts up.
/// - DELETE deletes every row of the type, DELETE_INSTANCE the row of the instance. Neither looks
///   at the type.
///
/// Nothing is announced to the management daemon.
/// \return what was applied, and what stays staged
/// \throws ConfigStoreException 2000 "Tarn host is being remediated by ORC, cannot set next-boot
///         configuration." while the key/value entry "BOOT_MODE" is "1"
/// \throws ConfigStoreException 2000 "Begin Transaction failed for: ApplyNextBootConfig" when this
///         user may only read the store, another writer does not end within 3 seconds, or the
///         calling thread holds a transaction on a store
/// \throws ConfigStoreException 2000 "Failed to write BootMode to database."
/// \throws ConfigStoreException 2000 for any other failure of the database
TARN_CONFIG_STORE_EXPORT ApplyResult ApplyNextBootConfig(const ApplyOptions& options);

}  // namespace TarnConfigStore
