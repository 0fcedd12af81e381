#include "db/last_error.h"

#include "platform/logger.h"

#include "db/access_rights.h"
#include "db/lock_holder.h"
#include "json/utf8.h"

#include <sqlite3.h>

#include <charconv>
#include <cstring>
#include <new>

namespace DBStore {
namespace {

constexpr std::size_t kLongestMessage = 1023;

// Without a destructor: registering one takes memory, and a thread that fails has none, perhaps. And
// threads may fail while they end.
struct ThreadError {
  ErrorKind kind = ErrorKind::NONE;
  int code = 0;
  std::size_t length = 0;
  char message[kLongestMessage + 1] = {};
};
constinit thread_local ThreadError threadError;

void Keep(ErrorKind kind, int code, std::initializer_list<std::string_view> message) noexcept {
  threadError.kind = kind;
  threadError.code = code;
  threadError.length = 0;
  for (const std::string_view piece : message) {
    const std::string_view fits = Json::Utf8::Fitting(piece, kLongestMessage - threadError.length);
    std::memcpy(threadError.message + threadError.length, fits.data(), fits.size());
    threadError.length += fits.size();
    if (fits.size() < piece.size()) {
      break;
    }
  }
  threadError.message[threadError.length] = '\0';
}

}  // namespace

LastError GetLastError() {
  return {threadError.kind, threadError.code, std::string(threadError.message, threadError.length)};
}

void ClearLastError() noexcept {
  threadError.kind = ErrorKind::NONE;
  threadError.code = 0;
  threadError.length = 0;
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

void ReportFailure(ErrorKind kind, int code, std::string_view message) noexcept {
  Keep(kind, code, {message});
  CSLogger::Log(CSLogger::kFailure, "%.*s", static_cast<int>(message.size()), message.data());
}

void ReportFailure(ErrorKind kind, int code,
                   std::initializer_list<std::string_view> message) noexcept {
  Keep(kind, code, message);
  CSLogger::Log(CSLogger::kFailure, "%s", threadError.message);
}

void ReportSqliteFailure(sqlite3* database, int code, std::string_view path,
                         const std::string& realPath, std::string_view action) noexcept {
  const ErrorKind kind = ErrorKindOf(code);
  std::string mend;
  try {
    if (kind == ErrorKind::PERMISSION) {
      mend.append("; ").append(MissingWriteRight(realPath));
    } else if (kind == ErrorKind::CORRUPT) {
      mend.append("; ").append(kRestoreIt);
    } else if ((code & 0xff) == SQLITE_BUSY && !realPath.empty()) {
      mend.append("; ").append(WhoLocksDatabase(realPath));
    }
  } catch (const std::bad_alloc&) {
    mend.clear();
  }
  char digits[16];
  const char* const end = std::to_chars(digits, digits + sizeof digits, code).ptr;
  ReportFailure(kind, code,
                {path, ": ", action, ": ", sqlite3_errmsg(database), " (",
                 std::string_view(digits, static_cast<std::size_t>(end - digits)), ")", mend});
}

}  // namespace internal
}  // namespace DBStore
