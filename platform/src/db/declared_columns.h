// The columns of a table that is declared in other words than its layout's.
#pragma once

#include "db/layout_parts.h"

namespace DBStore::internal {

/// Tells what differs: what is wrong, or else what others added. An SQLite result code.
int CompareColumns(sqlite3* database, const Layout& layout, const std::string& table,
                   PartsFound& found);

}  // namespace DBStore::internal
