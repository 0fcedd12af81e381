// A new database with every row that can still be read of an old one.
#pragma once

#include "platform/host_repair.h"

#include "db/database_file.h"
#include "db/layout.h"

#include <cstddef>
#include <string>
#include <vector>

namespace DBStore::internal {

struct Salvaged {
  DatabaseHandle database;                ///< in memory, as the layout says
  std::vector<HostRepair::LostRow> lost;  ///< what has no place in it
  std::size_t rows = 0;                   ///< that it holds
  std::size_t strays = 0;                 ///< of them, found where no tree leads to any more
  std::size_t unreadable = 0;             ///< pages that could not be read
  std::size_t keysAlone = 0;              ///< rows of which an index knew, and no more is left
  bool isBeginningLost = false;           ///< the page that says what the others are
  std::size_t damagedFrames = 0;          ///< of the log: newer states of pages

  std::string Summary() const;
  /// Why rows may be missing, or be older than they were; empty when nothing is.
  std::string Losses() const;
};

/// Reads the pages of a database and its log. Of several rows with one key, that in the table's tree
/// counts, then the one of the greatest revision. No row is dropped: what cannot be put in is among
/// the lost ones, and so is the key of a row of which no more is left. Raises std::runtime_error,
/// reported.
/// \param path  may be missing, as long as its log is there
Salvaged Salvage(const Layout& layout, const std::string& path);

}  // namespace DBStore::internal
