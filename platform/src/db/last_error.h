// Reporting failures of the database layer: into the log, and as the thread's last store error.
#pragma once

#include "platform/store_error.h"

#include <initializer_list>
#include <string>
#include <string_view>

struct sqlite3;

namespace DBStore::internal {

/// What an SQLite result code, primary or extended, comes down to.
ErrorKind ErrorKindOf(int code) noexcept;

/// What mends a database whose content is lost.
inline constexpr const char* kRestoreIt =
    "restore it from a backup (`tarnctl restore --force FILE`)";

/// Logs the message at priority 0 and keeps it as the thread's last store error, for which it needs
/// no memory: failures are reported where there is none, and where nothing may be raised.
void ReportFailure(ErrorKind kind, int code, std::string_view message) noexcept;
/// The same for a message in pieces.
void ReportFailure(ErrorKind kind, int code,
                   std::initializer_list<std::string_view> message) noexcept;

/// Reports the failure that SQLite told last on a connection, as "PATH: ACTION: what SQLite says",
/// with the right that is missing where the file cannot be written, or who has it locked. The action
/// says what was tried.
/// \param path       the database in messages
/// \param realPath   where it lies
void ReportSqliteFailure(sqlite3* database, int code, std::string_view path,
                         const std::string& realPath, std::string_view action) noexcept;

}  // namespace DBStore::internal
