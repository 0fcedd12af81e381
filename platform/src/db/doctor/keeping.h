// Where a repair keeps things.
#pragma once

#include <string>

namespace DBStore::internal {

/// A path in messages: fixed, without the root.
std::string NameOfPath(const std::string& path);

/// Moves a file into a directory beside it, under its own name. False, with errno.
bool MoveInto(const std::string& directory, const std::string& path);

}  // namespace DBStore::internal
