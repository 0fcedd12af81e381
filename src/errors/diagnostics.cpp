#include "tarnconfigstore/diagnostics.h"

#include "platform/logger.h"
#include "platform/store_error.h"

#include <utility>

namespace TarnConfigStore {

static_assert(static_cast<int>(StoreErrorKind::NONE) == static_cast<int>(DBStore::ErrorKind::NONE));
static_assert(static_cast<int>(StoreErrorKind::MISSING) ==
              static_cast<int>(DBStore::ErrorKind::MISSING));
static_assert(static_cast<int>(StoreErrorKind::PERMISSION) ==
              static_cast<int>(DBStore::ErrorKind::PERMISSION));
static_assert(static_cast<int>(StoreErrorKind::BUSY) == static_cast<int>(DBStore::ErrorKind::BUSY));
static_assert(static_cast<int>(StoreErrorKind::CORRUPT) ==
              static_cast<int>(DBStore::ErrorKind::CORRUPT));
static_assert(static_cast<int>(StoreErrorKind::NEWER) ==
              static_cast<int>(DBStore::ErrorKind::NEWER));
static_assert(static_cast<int>(StoreErrorKind::MISUSE) ==
              static_cast<int>(DBStore::ErrorKind::MISUSE));
static_assert(static_cast<int>(StoreErrorKind::OTHER) ==
              static_cast<int>(DBStore::ErrorKind::OTHER));

void SetLogSink(LogSink sink) {
  CSLogger::SetSink(std::move(sink));
}

void SetLogLevel(int priority) {
  CSLogger::SetLevel(priority);
}

StoreError GetLastStoreError() {
  const DBStore::LastError& last = DBStore::GetLastError();
  return {static_cast<StoreErrorKind>(last.kind), last.code, last.message};
}

void ClearLastStoreError() {
  DBStore::ClearLastError();
}

}  // namespace TarnConfigStore
