// Which right a user lacks on a file, in words for an operator.
#pragma once

#include <string>

namespace DBStore::internal {

/// What keeps this process from reading a file: "user 1000 lacks the right to search the directory
/// /etc (...)". Names the first directory on the way that is closed: without it the file cannot be looked at.
std::string MissingReadRight(const std::string& path);

/// The same for writing the file, for making SQLite's files beside it, and for file systems mounted
/// for reading only.
std::string MissingWriteRight(const std::string& path);

/// Whether it is the user's rights that keep this process from writing a file, now.
bool RightsRefuseWriting(const std::string& path) noexcept;

/// Whether nothing that is to be seen keeps this process from writing a file, now: the user's rights allow
/// it, and its file system is no one for reading.
bool CanBeWritten(const std::string& path) noexcept;

}  // namespace DBStore::internal
