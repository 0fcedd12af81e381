// Waiting for another process's lock on a database.
#pragma once

struct sqlite3;

namespace DBStore::internal {

/// Has a connection wait for locks up to so many milliseconds (sqlite3_busy_handler), in short
/// sleeps of random length. Those of sqlite3_busy_timeout grow, so that who came last is served
/// first and who waits longest starves.
void WaitAtMost(sqlite3* database, int milliseconds) noexcept;

}  // namespace DBStore::internal
