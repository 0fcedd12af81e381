// Making the changes that were staged for the next boot the current configuration.
#pragma once

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/next_boot_store.h"
#include "tarnconfigstore/object_id.h"

#include <vector>

namespace TarnConfigStore {

struct ApplyOptions {
  /// Changes that fit are applied even when others do not; otherwise it is all or nothing.
  bool applyRest = false;
};

/// A change that was applied and is staged no longer.
struct AppliedChange {
  ConfigStoreObjectId id;
  NextBootAction action;
};

/// A change that stays staged.
struct UnappliedChange {
  ConfigStoreObjectId id;
  NextBootAction action;
  /// Why it cannot be applied, as ConfigStore::Validate would tell; empty when it could be, and only
  /// waits for the others.
  std::vector<ErrorInfo> findings;
};

/// Both lists are sorted by component, group, key and instance id.
struct ApplyResult {
  std::vector<AppliedChange> applied;
  std::vector<UnappliedChange> staged;
};

/// Applies what is staged in the next-boot store, for the process that boots the host: everything in
/// one transaction, so that a process that ends at any moment leaves all of it or nothing, and a
/// later call goes on from there. What was applied is staged no longer, so no change is ever applied
/// twice. Nothing staged is a success with an empty result.
///
/// SET: the staged values become the instance's user, vital and cached value, those that the change
/// has none of become empty; the automatic value and the creation time stay, a pending value goes,
/// the row is confirmed, and the revision counts. Each such change is checked first, as one object
/// against today's types: a type that is not installed, or has instances now and had none, or the
/// other way round, data that does not fit or is no JSON, keep it staged, with the findings. DELETE:
/// every row of the type goes; DELETE_INSTANCE: that row. Deleting asks nothing of the type.
///
/// Writes no "BOOT_MODE" and calls nobody: what the host's services find when they start is
/// configuration, no change of it, so no notification is sent.
///
/// Raises ConfigStoreException 2000 "Tarn host is being remediated by ORC, cannot set next-boot
/// configuration." while "BOOT_MODE" is "1", "Begin Transaction failed for: ApplyNextBootConfig"
/// when the store can only be read or the calling thread holds a transaction on a store, and what a
/// failure of the databases gives; nothing is applied then. Takes a connection of its own.
/// Thread-safe.
TARN_CONFIG_STORE_EXPORT ApplyResult ApplyNextBootConfig(const ApplyOptions& options);

}  // namespace TarnConfigStore
