// What there was when a change was staged for the next boot: the common base of the change and of
// what has become of the object since.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include <optional>
#include <string>

namespace DBStore {

/// What the row of Config with a staged record's own key held just before the record was staged. A
/// record that replaces a staged one keeps the base of that.
struct StagedBase {
  enum class Kind {
    NONE,    ///< nobody knows: nothing is staged, or it was staged where no bases are kept
    NO_ROW,  ///< there was no row
    ROW      ///< what follows
  };
  Kind kind = Kind::NONE;
  std::string version;
  std::optional<std::string> user;
  std::optional<std::string> pending;
  std::optional<std::string> automatic;
  std::optional<std::string> vital;
  std::optional<std::string> cached;
  bool confirmed = true;  ///< its Success
  std::string creationTime;
  std::string modifiedTime;
  int revision = 0;
};

/// Reads the base of a staged record, as the connection's transaction shows it. A platform that
/// keeps no bases answers 0 and NONE, as one that does answers for a store made before it did. Who
/// applies a record reads its base before the record is removed, since the base goes with it.
/// \param base  untouched on failure
/// \return 0, or 1 for every failure
int ReadStagedBase(const TarnConfigStore::ConfigStoreObjectId& id, StagedBase* base,
                   const ConnectionHandle& connection);

}  // namespace DBStore
