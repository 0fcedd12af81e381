// What waits for the next boot: what it will change, and what was changed meanwhile.
#pragma once

#include "tarnconfigstore/apply_next_boot.h"
#include "tarnconfigstore/drift.h"
#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/next_boot_store.h"
#include "tarnconfigstore/object_id.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// A member that somebody changed after the change of its object was staged.
struct MemberChange {
  std::string pointer;  ///< as of ChangeConflict
  // As JSON; nothing where there is no value.
  std::optional<std::string> base;     ///< when the change was staged
  std::optional<std::string> staged;   ///< what the change makes of it
  std::optional<std::string> current;  ///< now
  /// Whose value it is: "user", "vital", "cached", by the type of today; "automatic" for a value that
  /// what is staged keeps from being read, and no merge touches.
  std::string part;
  /// What is staged is neither what there was nor what is there now.
  bool conflicts = false;
};

/// What waits of one object, or a staged deletion of all instances of a type.
struct PendingChange {
  ConfigStoreObjectId id;
  bool staged = false;  ///< in the next-boot store; ApplyNextBootConfig applies it
  NextBootAction action = NextBootAction::SET;  ///< of what is staged
  /// The row itself holds a pending value. SetBootStatus confirms it; applying what is staged drops it.
  bool pendingValue = false;
  bool unconfirmed = false;  ///< an upgrade wrote the row, and no boot has confirmed it
  /// The objects that the next boot makes different, as ComputeDriftFrom with NEXT_BOOT tells of them:
  /// "found" is what is current. None where nothing would change, and where the type is not installed.
  std::vector<DriftObject> difference;
  /// It is known what there was when the change was staged. Else ApplyMerge::MERGE merges nothing.
  bool hasBase = false;
  std::vector<MemberChange> meanwhile;  ///< in the order of the object's members
  /// Why what is staged cannot be applied as it stands.
  std::vector<ErrorInfo> findings;
  /// Why it cannot be applied merged with what was changed meanwhile, conflicts apart.
  std::vector<ErrorInfo> mergedFindings;
};

struct PendingOptions {
  /// Component, group, key and instance id are compared in this order, up to the first empty one.
  ConfigStoreObjectId prefix{"", "", ""};
  bool reveal = false;  ///< secrets as they are; else masked as "***"
};

/// Lists what waits for the next boot, as the store has it at one moment. Writes, locks and announces
/// nothing. Thread-safe.
/// \return sorted by component, group, key and instance id
/// \throws ConfigStoreException 2000 "Failed to connect to database", and for any other failure of the
///         database
TARN_CONFIG_STORE_EXPORT std::vector<PendingChange> ListPendingChanges(
    const PendingOptions& options);

}  // namespace TarnConfigStore
