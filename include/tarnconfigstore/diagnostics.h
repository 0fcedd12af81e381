// Seeing what the library logs, and what the database said.
#pragma once

#include "tarnconfigstore/export.h"

#include <functional>
#include <string>

namespace TarnConfigStore {

/// Receives log lines: the priority (0 failures, 1 recoverable problems, 2 notable outcomes, 3
/// entry of writes, 4 entry of reads and fine tracing) and the text, without a line end.
using LogSink = std::function<void(int priority, const char* line)>;

/// Sends log lines of every priority up to the level to a function instead of the system log; an
/// empty function restores the system log. The function is called on the thread that logs, one call
/// at a time, while the logger's lock is held: it must not log, and what it throws is dropped.
TARN_CONFIG_STORE_EXPORT void SetLogSink(LogSink sink);

/// Highest priority that is logged; 2 at start. Lines above it cost no formatting.
TARN_CONFIG_STORE_EXPORT void SetLogLevel(int priority);

/// What a failure of the database comes down to.
enum class StoreErrorKind {
  NONE,        ///< no failure on this thread since the last ClearLastStoreError
  MISSING,     ///< there is no database at the path
  PERMISSION,  ///< this user may not read or write it
  BUSY,        ///< another writer held it for longer than the wait limit
  CORRUPT,     ///< damaged, truncated, or no database
  NEWER,       ///< written by a newer version of the library
  MISUSE,      ///< the call made no sense in the state the connection was in
  OTHER,       ///< disk full, I/O error, or an SQL error: the message tells
};

/// The last failure of the database layer on this thread.
struct StoreError {
  StoreErrorKind kind = StoreErrorKind::NONE;
  int code = 0;  ///< SQLite extended result code (https://sqlite.org/rescode.html), 0 if none
  std::string message;  ///< what went wrong, with which file, and what mends it
};

/// Thread-local; a failing operation sets it before the exception is thrown, a succeeding one
/// leaves it.
TARN_CONFIG_STORE_EXPORT StoreError GetLastStoreError();
TARN_CONFIG_STORE_EXPORT void ClearLastStoreError();

}  // namespace TarnConfigStore
