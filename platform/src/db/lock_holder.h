// Who has a file locked, for messages. Files are looked at, never opened: closing one would drop the
// locks that this process has on it.
#pragma once

#include <string>

namespace DBStore::internal {

/// "process 12 (name)" for one that has a flock(2) on the open file; where none is to be seen, words
/// that say where to look.
std::string LockHolder(int descriptor);

/// Who keeps a database from being written, and what to do: "process 12 (name) has it locked for
/// writing: ...". By the time that it is asked, who it was may be done; and what is in another PID
/// namespace has no number here.
/// \param path  where the database lies
std::string WhoLocksDatabase(const std::string& path);

}  // namespace DBStore::internal
