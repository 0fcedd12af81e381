#include "db/raising.h"

#include "db/access_rights.h"
#include "db/last_error.h"
#include "db/lock_holder.h"

#include <sqlite3.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace DBStore::internal {

void Raise(ErrorKind kind, int code, const std::string& message) {
  ReportFailure(kind, code, message);
  throw std::runtime_error(message);
}

void RaiseSystemError(std::string_view path, std::string_view what, int error) {
  std::string message(path);
  message.append(": ").append(what);
  if (error != 0) {
    message.append(": ").append(std::error_code(error, std::generic_category()).message());
  }
  ErrorKind kind = ErrorKind::OTHER;
  if (error == EACCES || error == EPERM || error == EROFS) {
    kind = ErrorKind::PERMISSION;
    message += "; run as a user who may do that, usually root";
  } else if (error == EWOULDBLOCK) {
    kind = ErrorKind::BUSY;
  } else if (error == ENOSPC || error == EDQUOT) {
    message += "; make room and try again";
  }
  Raise(kind, 0, message);
}

void RaiseSqliteError(int code, std::string_view path, const std::string& realPath,
                      std::string_view what) {
  const ErrorKind kind = ErrorKindOf(code);
  std::string message(path);
  message.append(": ").append(what).append(": ").append(sqlite3_errstr(code));
  message.append(" (").append(std::to_string(code)).append(")");
  if (kind == ErrorKind::PERMISSION) {
    message.append("; ").append(MissingWriteRight(realPath));
  } else if (kind == ErrorKind::BUSY) {
    message.append("; ").append(WhoLocksDatabase(realPath));
  }
  Raise(kind, code, message);
}

void RaiseReported() {
  throw std::runtime_error(GetLastError().message);
}

}  // namespace DBStore::internal
