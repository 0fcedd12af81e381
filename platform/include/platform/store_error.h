// The last failure of the database layer on each thread.
#pragma once

#include <string>

namespace DBStore {

/// What a failure comes down to; in the order of StoreErrorKind in tarnconfigstore/diagnostics.h.
enum class ErrorKind { NONE, MISSING, PERMISSION, BUSY, CORRUPT, NEWER, MISUSE, OTHER };

struct LastError {
  ErrorKind kind = ErrorKind::NONE;
  int code = 0;  ///< SQLite extended result code
  std::string message;
};

/// Thread-local.
const LastError& GetLastError() noexcept;
void ClearLastError() noexcept;

}  // namespace DBStore
