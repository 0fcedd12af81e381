// Applying the changes that were staged for the next boot.
#pragma once

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/next_boot_store.h"
#include "tarnconfigstore/object_id.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// What becomes of what was written to an object after its change was staged.
enum class ApplyMerge : int {
  NONE = 0,   ///< what is staged replaces it
  MERGE = 1,  ///< it stays, where the staged change leaves it alone
};

/// Which side counts where a staged change and what was written meanwhile say different things.
enum class ConflictDecision : int {
  NONE = 0,     ///< neither: the change stays staged
  STAGED = 1,   ///< what is staged
  CURRENT = 2,  ///< what is current
};

/// What ApplyNextBootConfig does with changes that do not fit their types, and with what was written
/// after they were staged.
struct ApplyOptions {
  bool applyRest = false;  ///< applies the others all the same; else nothing is applied

  /// What the key/value entry "BOOT_MODE" gets, in the same transaction, when nothing stays staged;
  /// empty: it stays as it is. Only the process that boots the host knows what it should be.
  std::string bootModeWhenDone = {};

  ApplyMerge merge = ApplyMerge::NONE;
  ConflictDecision conflicts = ConflictDecision::NONE;  ///< of a merge
};

/// A member of which a staged change and what was written meanwhile say different things.
struct ChangeConflict {
  /// JSON Pointer (RFC 6901) into the object, empty for all of it. The elements of lists of instances
  /// are named by their instance ids instead of their places, and so are the instances that a deletion
  /// of all of them would delete.
  std::string pointer;
  // As JSON; nothing where there is no value. Secrets are masked as "***".
  std::optional<std::string> base;     ///< when the change was staged
  std::optional<std::string> staged;   ///< what the change makes of it
  std::optional<std::string> current;  ///< now
};

/// A change that was applied, or taken back. It is no longer staged.
struct AppliedChange {
  ConfigStoreObjectId id;
  NextBootAction action;
  /// It was merged with what was written meanwhile, if anything was. False without ApplyOptions::merge,
  /// and where nobody knows what there was when the change was staged: it was applied as it stood.
  bool merged = false;
  std::vector<ChangeConflict> decided = {};  ///< conflicts that ApplyOptions::conflicts decided
  /// CURRENT decided for the whole object: the change was taken back, and nothing was written.
  bool takenBack = false;
};

/// A change that stays staged.
struct UnappliedChange {
  ConfigStoreObjectId id;
  NextBootAction action;
  /// Why it does not fit its type, once merged where it is; empty when it fits.
  std::vector<ErrorInfo> findings;
  std::vector<ChangeConflict> conflicts = {};  ///< that nobody decided
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
/// - With ApplyMerge::MERGE, what is staged is first recorded anew, in the same transaction, as the
///   three-way merge of the content when it was staged, the content that is staged, and the
///   content now. Content is what applying replaces: cached, vital and user's value laid over each
///   other, of the latter the pending one where there is one, confirmed or not. A member that only
///   one side changed since keeps that change, removals included. Lists of instances merge element by
///   element by their ids; other lists, texts and numbers are one value each. The merged object is
///   checked in the staged one's place. Where both sides changed a member, and not alike, there is a
///   conflict, and the change stays staged as it is unless ApplyOptions::conflicts decides; an object
///   that was deleted meanwhile conflicts as a whole, and is not made again where CURRENT decides.
///   A deletion conflicts where the object was changed in any value since it was staged; where
///   CURRENT decides, it is staged no longer and nothing is deleted. A deletion of all instances
///   conflicts with each, since nobody knows what they were.
///   Nothing is merged where nobody knows what there was: what was staged in a store of an older
///   layout is applied as it stands.
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
