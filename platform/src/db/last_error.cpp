#include "db/last_error.h"

#include "platform/logger.h"

#include "db/access_rights.h"

#include <sqlite3.h>

#include <new>
#include <utility>

namespace DBStore {
namespace {

// Threads may fail while they end, after their own LastError is gone; they then find an empty one.
thread_local bool threadEnding = false;

struct ThreadError {
  LastError error;
  ~ThreadError() { threadEnding = true; }
};

// Never destroyed: there are callers while the process exits.
union EmptyError {
  LastError error;
  constexpr EmptyError() : error() {}
  ~EmptyError() {}
};
constinit const EmptyError noError;

LastError* ErrorOfThread() noexcept {
  if (threadEnding) {
    return nullptr;
  }
  thread_local ThreadError current;
  return &current.error;
}

}  // namespace

const LastError& GetLastError() noexcept {
  const LastError* error = ErrorOfThread();
  return error != nullptr ? *error : noError.error;
}

void ClearLastError() noexcept {
  if (LastError* error = ErrorOfThread()) {
    error->kind = ErrorKind::NONE;
    error->code = 0;
    error->message.clear();
  }
}

namespace internal {

ErrorKind ErrorKindOf(int code) noexcept {
  switch (code & 0xff) {
    case SQLITE_OK:
      return ErrorKind::NONE;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return ErrorKind::BUSY;
    case SQLITE_READONLY:
      // The file at the path is another one by now: nobody's permission would help.
      return code == SQLITE_READONLY_DBMOVED ? ErrorKind::OTHER : ErrorKind::PERMISSION;
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return ErrorKind::PERMISSION;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return ErrorKind::CORRUPT;
    case SQLITE_MISUSE:
      return ErrorKind::MISUSE;
    default:
      return ErrorKind::OTHER;
  }
}

void ReportFailure(ErrorKind kind, int code, std::string message) noexcept {
  CSLogger::Log(CSLogger::kFailure, "%s", message.c_str());
  if (LastError* error = ErrorOfThread()) {
    error->kind = kind;
    error->code = code;
    error->message = std::move(message);
  }
}

void ReportSqliteFailure(sqlite3* database, int code, std::string_view path,
                         const std::string& realPath, std::string_view action) noexcept {
  try {
    std::string message(path);
    message.append(": ").append(action).append(": ").append(sqlite3_errmsg(database));
    message.append(" (").append(std::to_string(code)).append(")");
    const ErrorKind kind = ErrorKindOf(code);
    if (kind == ErrorKind::PERMISSION) {
      message.append("; ").append(MissingWriteRight(realPath));
    } else if (kind == ErrorKind::CORRUPT) {
      message.append("; ").append(kRestoreIt);
    }
    ReportFailure(kind, code, std::move(message));
  } catch (const std::bad_alloc&) {
    ReportFailure(ErrorKindOf(code), code, std::string());
  }
}

}  // namespace internal
}  // namespace DBStore
