// Bringing a database of an older layout over to the one that is made today.
#pragma once

#include "db/database_file.h"
#include "db/layout.h"

namespace DBStore::internal {

/// In one transaction: whoever has the database open, and whoever opens it after this was killed,
/// finds it as it was or as it is to be. Readers go on meanwhile, writers wait.
/// False when there is nothing to bring over. Raises std::runtime_error, reported, when it cannot be
/// done; the database is then as it was.
bool UpgradeLayout(const Layout& layout, const DatabaseFile& file);

}  // namespace DBStore::internal
