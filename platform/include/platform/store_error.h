// The last failure of the stores on each thread.
#pragma once

#include <string>

namespace DBStore {

/// What a failure comes down to; in the order of StoreErrorKind in tarnconfigstore/diagnostics.h.
enum class ErrorKind { NONE, MISSING, PERMISSION, BUSY, CORRUPT, NEWER, MISUSE, OTHER };

struct LastError {
  ErrorKind kind = ErrorKind::NONE;
  int code = 0;         ///< SQLite extended result code, 0 where there is none
  std::string message;  ///< what went wrong, with which store, and what mends it; may be cut short
};

/// Of the calling thread. An operation of the database layer, of the schema store or of the host's
/// setup sets it before it answers that it failed, whether there is memory or not; one that succeeds
/// leaves it. Callable while the thread or the process ends.
LastError GetLastError();
void ClearLastError() noexcept;

}  // namespace DBStore
