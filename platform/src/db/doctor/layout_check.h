// What a database should consist of, and does not.
#pragma once

#include "platform/host_repair.h"

#include "db/doctor/database_check.h"

struct sqlite3;

namespace DBStore::internal {

/// Compares a database of the layout's own version with one that is made after the layout. Columns
/// that are missing or other ones make it unsound: its rows have to move into a table that is right.
/// \return an SQLite result code
int CheckLayout(sqlite3* database, const Layout& layout, DatabaseState& state,
                std::vector<HostRepair::Finding>& findings);

}  // namespace DBStore::internal
