// Taking back what was set of stored objects.
//
// What holds for both functions:
// - All of it takes effect, or none. Given a store, they join its transaction, if one is open; else they
//   take a connection of their own, and fail while this thread has a transaction open on a store.
// - A type whose changes take effect at the next boot is refused: stage the change (next_boot_store.h).
// - Other parts stay as they are, byte by byte; but the pending value goes where the user's part is
//   written, as with every write of it. During an upgrade, what is pending is the user's part.
// - A write counts in the revision, is of the type's present version, and is announced to the
//   management daemon after the commit, or inside of the store's transaction. A part that nothing is
//   left of goes, and a row without parts.
// - Thread-safe.
// Both throw, and have written nothing then,
//   ConfigStoreException 1037 when the type is not installed,
//   ValidationException 2000 when the identifier does not suit its type, for a type whose changes
//     take effect at the next boot; and while the host boots and no upgrade runs, for the user's part
//     of a type that is not accessible during boot,
//   ValidationException 1090 with every finding, when what would be left does not fit the type,
//   InvalidArgumentException 2000 for a place that is no JSON Pointer, for the pending part, and for a
//     store that ConfigStore::GetStore has not made,
//   InvalidArgumentException 1080 for a stored value that is no JSON, and
//   ConfigStoreException 2000 for a failure of the database.
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/object_id.h"
#include "tarnconfigstore/parts.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// What became of one place that was to be unset.
struct UnsetMember {
  std::string pointer;            ///< as it was given
  std::vector<ConfigPart> taken;  ///< the parts that held it; none: it was not set
  std::vector<ConfigPart> left;  ///< the parts that hold it still, of those that were not asked for
};

struct UnsetResult {
  bool isWritten = false;  ///< false where a place was not set: nothing was taken away
  std::vector<UnsetMember> members;
  bool dropsPending = false;  ///< a pending value went
};

/// Takes members out of a stored object. They read as if they had never been set: as another part has
/// them, or as their default. Objects and lists that are empty without them go too, where Set would not
/// store them.
/// \param places  JSON Pointers; the elements of lists of instances are named by their ids, as in
///                "/portGroups/Backup". Elements of other lists cannot be taken out: set the list
/// \param part    where they are taken out of; nothing: of the user's, the vital and the cached part
/// \return what became of each place, in their order. Nothing is written unless each was set
/// Throws ValidationException 1090, too, with the place of an instance id or of an element without id,
/// and when nothing would be left of the object.
TARN_CONFIG_STORE_EXPORT UnsetResult UnsetMembers(const ConfigStoreObjectId& csoId,
                                                  const std::vector<std::string>& places,
                                                  std::optional<ConfigPart> part = std::nullopt);
/// The same on a store.
TARN_CONFIG_STORE_EXPORT UnsetResult UnsetMembers(ConfigStore& store,
                                                  const ConfigStoreObjectId& csoId,
                                                  const std::vector<std::string>& places,
                                                  std::optional<ConfigPart> part = std::nullopt);

/// What a part of an object is reset to.
enum class ResetTarget : int {
  DEFAULTS = 0,  ///< nothing, so that the type's defaults are read
  SHIPPED = 1,   ///< what the type came with
};

enum class ResetOutcome : int {
  UNCHANGED = 0,    ///< it is that already; nothing was written
  CHANGED = 1,      ///< the part was written
  REMOVED = 2,      ///< no part is left: the row is deleted
  NOT_SHIPPED = 3,  ///< the type came with no such object; nothing was written
};

struct ResetResult {
  ResetOutcome outcome = ResetOutcome::UNCHANGED;
  bool dropsPending = false;  ///< a pending value went
};

/// Resets one part of an object, or one place of it.
/// \param place  as one of UnsetMembers; empty for all of the part. What the target does not have there
///               is taken away, an element of a list that it has is put at its end where it is missing
/// \param part   the user's, unless it is named: the others are kept whatever is reset
TARN_CONFIG_STORE_EXPORT ResetResult ResetObject(const ConfigStoreObjectId& csoId,
                                                 ResetTarget target, const std::string& place = {},
                                                 ConfigPart part = ConfigPart::USER);
/// The same on a store.
TARN_CONFIG_STORE_EXPORT ResetResult ResetObject(ConfigStore& store,
                                                 const ConfigStoreObjectId& csoId,
                                                 ResetTarget target, const std::string& place = {},
                                                 ConfigPart part = ConfigPart::USER);

}  // namespace TarnConfigStore
