// What a write-ahead log holds (https://sqlite.org/fileformat2.html#the_write_ahead_log), beyond
// where SQLite reads it too: SQLite stops at the first frame that is damaged, and takes what was
// committed after it for nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>

namespace DBStore::internal {

struct LogImages {
  using Pages = std::map<std::uint32_t, std::size_t>;  ///< the image of each, as an offset

  std::size_t pageSize = 0;       ///< 0 where the log holds nothing
  Pages pages;                    ///< what SQLite takes out of it
  Pages hidden;                   ///< what was committed and SQLite does not see
  std::size_t damagedFrames = 0;  ///< before the last commit that can be read
  /// The hidden images are newer than what SQLite sees. Otherwise they may be, or be left over from
  /// before somebody wrote over the damage.
  bool hiddenIsNewer = false;

  bool HidesCommits() const noexcept { return !hidden.empty(); }
};

/// Each frame's checksum goes on from that of the frame before, which is written down there: so what
/// stands behind a damaged one can be told from what only looks like it.
/// \param pageSize  of the database, for a log whose own header is lost
LogImages ReadLog(std::string_view log, std::size_t pageSize);

}  // namespace DBStore::internal
