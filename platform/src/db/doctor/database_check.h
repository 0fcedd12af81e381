// One database of the stores, as it is found.
#pragma once

#include "platform/host_repair.h"

#include "db/doctor/table_shapes.h"
#include "db/layout.h"

#include <vector>

namespace DBStore::internal {

struct DatabaseState {
  bool isThere = false;        ///< a regular file of its name, which this user may read
  bool isReadable = false;     ///< the database layer reads it, and writes nothing for that
  bool isSound = false;        ///< what is readable has nothing that has to be salvaged
  bool isSalvageable = false;  ///< its pages are worth being looked through
  /// Not there, or nothing that SQLite can read: a new one would take nothing from anybody but what can
  /// be salvaged. Never for one that is only locked, or not for this user.
  bool isLost = false;
  bool hasJournal = false;  ///< left by a writer that was killed: to be taken back by the next one
  std::vector<SchemaEntry> missing;  ///< what should be in it, tables first
  std::vector<SchemaEntry> changed;  ///< what is in it in another form, as it should be
};

/// Looks into a database without writing anything, and adds what is wrong. Raises std::runtime_error
/// when that cannot even be tried.
DatabaseState CheckDatabase(const Layout& layout, std::vector<HostRepair::Finding>& findings);

}  // namespace DBStore::internal
