// What of a store differs from a document, object by object and member by member.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/export.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// A member that differs. Where a whole object or list is on one side only, that is the member.
struct DriftMember {
  /// JSON Pointer (RFC 6901) into the object, but the elements of lists of instances are named by their
  /// instance ids instead of their places: "/portGroups/Backup/vlan".
  std::string pointer;
  std::optional<std::string>
      expected;                      ///< what the document says, as JSON; nothing: not to be there
  std::optional<std::string> found;  ///< what is read from the store, as JSON
  /// The part that set what was found, or that what is expected belongs to: "user", "automatic",
  /// "vital", "cached" or "pending".
  std::string part;
};

/// How an object differs.
enum class DriftKind : int {
  CHANGED = 0,
  MISSING = 1,  ///< the document has it, the store has not
  EXTRA = 2,    ///< the store has it, and the document says otherwise
};

/// An object that differs, or a part of one. Immutable; safe from several threads.
class TARN_CONFIG_STORE_EXPORT DriftObject {
 public:
  /// From the text that ToJson gives.
  /// \throws InvalidArgumentException 1080 for a text that is not JSON, or says something else
  DriftObject(const ConfigStoreObjectId& id, std::string_view json);
  DriftObject(const ConfigStoreObjectId& id, DriftKind kind, std::vector<DriftMember> members);

  const ConfigStoreObjectId& GetConfigStoreObjectId() const { return id_; }
  DriftKind GetKind() const { return kind_; }
  /// In the order of the pointers, parts apart. Secrets are masked as "***".
  const std::vector<DriftMember>& GetMembers() const { return members_; }

  /// What differs in a sub-object, or in an instance of a list: pointers in it begin there.
  /// \throws ConfigStoreException 1048 when nothing differs in a sub-object of this key
  /// \throws ConfigStoreException 1049 when nothing differs in this instance
  DriftObject GetSubObject(const SubObjectId& id) const;
  /// The instances of a list in which something differs, in the order of their ids.
  /// \throws ConfigStoreException 1046 when nothing differs in a list of this key
  std::vector<DriftObject> GetSubObjectInstances(const std::string& key) const;

  /// \return {"kind": "changed", "missing" or "extra", "members": [{"pointer", "expected", "found",
  ///         "part"}]}, compact
  std::string ToJson() const;

 private:
  ConfigStoreObjectId id_;
  DriftKind kind_;
  std::vector<DriftMember> members_;
};

struct DriftOptions {
  /// What is compared: component, group, key and instance id, up to the first empty one.
  ConfigStoreObjectId prefix{"", "", ""};
  /// The document is meant to have everything: objects that it does not name differ, too.
  bool complete = false;
  bool reveal = false;  ///< secrets as they are
  std::size_t longest = kLongestDocument;
};

/// Compares the store with a document: says what ImportConfig with REPLACE_NAMED (REPLACE_ALL for a
/// complete document) would change. Writes, locks and announces nothing. Thread-safe.
/// \return the objects that differ, in the document's order, and last those that it does not name
/// Throws as ImportConfig; ValidationException 1089 where the document does not fit the types.
TARN_CONFIG_STORE_EXPORT std::vector<DriftObject> ComputeDrift(std::string_view document,
                                                               const DriftOptions& options);

/// States that a store can be compared with, beside documents.
enum class ReferenceState : int {
  /// The objects that the types ship with.
  SHIPPED = 0,
  /// The defaults that absent members read as: what differs is what the user set otherwise.
  DEFAULTS = 1,
  /// What is current once the next boot has applied what is staged and confirmed what is pending.
  NEXT_BOOT = 2,
};

/// Compares the store with such a state, of which it speaks as of a document's: NEXT_BOOT of all parts,
/// the others of the user's. Rows of types that are not installed are left out, with a line in the log.
/// Writes, locks and announces nothing. Thread-safe.
/// \param options  "complete" makes no difference
/// \return the objects that differ, in the order of their identifiers
TARN_CONFIG_STORE_EXPORT std::vector<DriftObject> ComputeDriftFrom(ReferenceState state,
                                                                   const DriftOptions& options);

}  // namespace TarnConfigStore
