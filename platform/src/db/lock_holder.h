// Who has a file locked, for messages.
#pragma once

#include <string>

namespace DBStore::internal {

/// "process 12 (name)" for one that has a flock(2) on the open file; where none is to be seen, words
/// that say where to look.
std::string LockHolder(int descriptor);

}  // namespace DBStore::internal
