// Trying writes on a copy of the host, and what they would change.
#pragma once

#include "tarnconfigstore/drift.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/object_id.h"
#include "tarnconfigstore/pending.h"

#include <memory>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// A type that differs: in its text, where the versions are the same.
struct TypeDifference {
  ConfigStoreObjectId type{"", "", ""};
  std::string before;  ///< version; empty where it was not installed
  std::string after;   ///< the same, for one that is not installed any more
};

/// A key/value entry that differs; empty is as good as absent.
struct EntryDifference {
  std::string key;
  std::string before;
  std::string after;
};

/// What was changed on the copy of a host. Secrets are masked as "***".
struct HostDifference {
  /// What is current. Of each member "found" is what there was, "expected" what came of it; MISSING says
  /// that the object was made, EXTRA that it was deleted. Without members where its type is not
  /// installed: nobody knows what of it is secret.
  std::vector<DriftObject> objects;
  /// What waits for the next boot since, or otherwise than it did, as ListPendingChanges tells of it.
  std::vector<PendingChange> waiting;
  /// What waited and does not any more, as it was.
  std::vector<PendingChange> settled;
  std::vector<TypeDifference> types;
  std::vector<EntryDifference> entries;

  /// True when nothing differs. Revisions, times and versions of rows do not count.
  TARN_CONFIG_STORE_EXPORT bool IsEmpty() const;
};

/// A copy of the host's store and types, which takes the host's place in this process for as long as it
/// lives: whatever is written is written to the copy, is refused as it would be, and nobody is told of
/// it. The host itself is neither written nor locked; others go on writing it.
///
/// The host root and the notifications are the process's: one of these at a time, in a program that does
/// nothing else meanwhile. Stores that were opened before, or on the copy, are to be opened anew after it
/// came, or went.
class TARN_CONFIG_STORE_EXPORT Rehearsal {
 public:
  /// Copies the store and the types as they are at one moment; on a host that has none there are none.
  /// What is outside of them, as whether an upgrade runs, is the host's own.
  /// \param directory  an empty directory that nobody else can read: the copies hold every secret. It is
  ///                   the caller's to remove, after this object is gone
  /// \throws ConfigStoreException 2000 with the path and what is wrong: a store that cannot be read, no
  ///         room for the copies. The host root is as it was then
  explicit Rehearsal(const std::string& directory);
  /// The host is in its place again.
  ~Rehearsal();
  Rehearsal(const Rehearsal&) = delete;
  Rehearsal& operator=(const Rehearsal&) = delete;

  /// \return what was changed since the copy was made
  /// \throws ConfigStoreException 2000 when one of the copies cannot be read
  HostDifference Difference() const;

  /// What was written to the copies, and this user could not have written to the host.
  /// \return the path, the right that is missing and what mends it; empty where nothing is
  std::string WhyNotWritable() const;

  /// \return a text, a failure's or a report's, with the host's paths in the place of the copy's
  std::string InWordsOfHost(std::string text) const;

 private:
  struct Copies;
  std::unique_ptr<const Copies> copies_;
};

}  // namespace TarnConfigStore
