// Failures that are raised: reported first, as every failure of the database layer is.
#pragma once

#include "platform/store_error.h"

#include <string>
#include <string_view>

struct sqlite3;

namespace DBStore::internal {

/// Reports a failure and raises it as std::runtime_error with its message.
[[noreturn]] void Raise(ErrorKind kind, int code, const std::string& message);

/// The failure of a system call: "PATH: WHAT: reason", with what mends it. No reason for 0.
[[noreturn]] void RaiseSystemError(std::string_view path, std::string_view what, int error);

/// What SQLite answered on a database: "PATH: WHAT: reason".
/// \param path      the database in messages
/// \param realPath  where it lies
[[noreturn]] void RaiseSqliteError(int code, std::string_view path, const std::string& realPath,
                                   std::string_view what);

/// Raises what was reported last.
[[noreturn]] void RaiseReported();

}  // namespace DBStore::internal
