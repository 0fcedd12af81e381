// What the library logs, and what the database said. Everything here is thread-safe.
#pragma once

#include "tarnconfigstore/export.h"

#include <functional>
#include <string>

namespace TarnConfigStore {

/// Receives log lines.
///   priority  0 failures, 1 recoverable problems, 2 notable outcomes, 3 calls that write, 4 calls
///             that read, and fine tracing
///   line      a NUL-terminated text without a line end, valid during the call
using LogSink = std::function<void(int priority, const char* line)>;

/// Sends log lines to a function instead of syslog(3).
///
/// The function runs on the thread that logs, one call at a time, and under the logger's lock: it
/// must not log. What it throws is dropped.
/// \param sink  an empty function restores syslog
TARN_CONFIG_STORE_EXPORT void SetLogSink(LogSink sink);

/// Sets the highest priority that is logged; at start it is 2. Lines above it are not formatted.
TARN_CONFIG_STORE_EXPORT void SetLogLevel(int priority);

/// The kinds of failures of the database.
enum class StoreErrorKind {
  NONE,        ///< no failure on this thread since the last ClearLastStoreError
  MISSING,     ///< there is no database at the path
  PERMISSION,  ///< this user may not read or write it
  BUSY,        ///< another writer did not end within 3 seconds
  CORRUPT,     ///< it is damaged, truncated, or no database
  NEWER,       ///< a newer version of the library has written it
  MISUSE,      ///< the connection was in no state for the call
  OTHER,       ///< disk full, an I/O error, an SQL error: see the message
};

/// A failure of the database.
struct StoreError {
  StoreErrorKind kind = StoreErrorKind::NONE;
  int code = 0;         ///< extended result code of SQLite (https://sqlite.org/rescode.html), or 0
  std::string message;  ///< what failed, on which file, and what corrects it
};

/// \return the last failure of the database on this thread. An operation that fails sets it before
///         it throws; one that succeeds leaves it
TARN_CONFIG_STORE_EXPORT StoreError GetLastStoreError();

/// Forgets the last failure on this thread.
TARN_CONFIG_STORE_EXPORT void ClearLastStoreError();

/// Why a text could not be read as JSON, or a file not at all.
struct ParseFailure {
  unsigned long line = 0;    ///< of the fault in the text, counted from 1; 0 where there is no text
  unsigned long column = 0;  ///< the same, in bytes
  char source[128] = "";     ///< which text it is: a file's path, a value of a stored object
  char reason[128] = "";     ///< what is wrong with it; this and the source may be cut short. Empty
                             ///< where there was no failure
};

/// \return the last text or file that could not be read on this thread. An operation that throws
///         1080 or 1081 sets it before; other failures, and successes, leave it. Callable while the thread or the process ends; allocates nothing
TARN_CONFIG_STORE_EXPORT ParseFailure GetLastParseFailure() noexcept;

/// Forgets the last such text on this thread.
TARN_CONFIG_STORE_EXPORT void ClearLastParseFailure() noexcept;

}  // namespace TarnConfigStore
