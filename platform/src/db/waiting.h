// Waiting for another process's lock on a database.
#pragma once

struct sqlite3;

namespace DBStore::internal {

/// Has a connection wait for locks up to so many milliseconds (sqlite3_busy_handler), in short
/// sleeps of random length. Those of sqlite3_busy_timeout grow, so that who came last is served
/// first and who waits longest starves.
void WaitAtMost(sqlite3* database, int milliseconds) noexcept;

/// Called before this process takes the right to write, and after it gave it back. While it had to
/// wait for others of late, it leaves them a moment in between: who tries again and again is asleep
/// or has no processor just then, and would never find the lock free.
void LetOthersWrite() noexcept;
void NoteWritten() noexcept;

}  // namespace DBStore::internal
