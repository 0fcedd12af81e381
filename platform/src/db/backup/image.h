// A database that is a part of a file.
#pragma once

#include "db/database_file.h"

#include <cstdint>

namespace DBStore::internal {

/// Where a database lies in an open file, which stays open for as long as the database is.
struct ImagePlace {
  int descriptor = -1;
  std::int64_t begin = 0;
  std::int64_t length = 0;
};

/// Opens a database for reading that nobody writes, or an empty one for writing, which may grow
/// behind its beginning. Nothing keeps others from it, and what was not completed stays as it is: for
/// files that nobody else knows.
DatabaseHandle OpenImage(const ImagePlace& place, bool writable, int& code) noexcept;

}  // namespace DBStore::internal
