// A write that is a transaction of its own, unless one is open.
#pragma once

#include "db/store_connection.h"

#include <sqlite3.h>

namespace DBStore {

/// Stands in the process's queue of writers, where it has to, until it ends. For one who holds the
/// connection's lock.
class StoreConnection::QueuedWrite {
 public:
  explicit QueuedWrite(StoreConnection& connection) noexcept : connection_(connection) {}
  ~QueuedWrite() {
    if (entered_) {
      connection_.LeaveQueue();
    }
  }
  QueuedWrite(const QueuedWrite&) = delete;
  QueuedWrite& operator=(const QueuedWrite&) = delete;

  /// Waits until the connection may write; a status other than 0, reported, when it may not.
  int Enter(int limit, const Action& action) {
    if (const int code = connection_.OpenAnew()) {
      return code;
    }
    if (connection_.IsTransactionGone()) {
      return connection_.RefuseGone(action);
    }
    if (connection_.depth_ > 0 || connection_.queued_) {
      return SQLITE_OK;
    }
    const int status = connection_.EnterQueue(limit, action);
    entered_ = status == SQLITE_OK;
    return status;
  }

 private:
  StoreConnection& connection_;
  bool entered_ = false;
};

}  // namespace DBStore
