// The last store error of each thread, and the tests' hook.
#include "platform/logger.h"
#include "platform/store_error.h"

#include "store.h"

namespace DBStore {
namespace {

thread_local LastError lastError;
std::mutex hookLock;
testing::Hook currentHook;

ErrorKind KindOf(int status) {
  switch (status & 0xff) {
    case SQLITE_BUSY:
      return ErrorKind::BUSY;
    case SQLITE_CANTOPEN:
      return ErrorKind::MISSING;
    case SQLITE_MISUSE:
      return ErrorKind::MISUSE;
    default:
      return ErrorKind::OTHER;
  }
}

}  // namespace

const LastError& GetLastError() noexcept {
  return lastError;
}

void ClearLastError() noexcept {
  lastError = LastError();
}

void testing::SetHook(Hook hook) {
  const std::lock_guard guard(hookLock);
  currentHook.swap(hook);
}

int internal::Fail(int status, const std::string& what) {
  CSLogger::Log(0, "%s", what.c_str());
  lastError = {KindOf(status), status, what};
  return status;
}

int internal::AskHook(testing::Operation operation, std::string_view detail) {
  std::unique_lock lock(hookLock);
  const testing::Hook hook = currentHook;
  lock.unlock();
  const int status = hook ? hook(operation, detail) : 0;
  return status == 0 ? 0 : Fail(status, "refused by a test: " + std::string(detail));
}

}  // namespace DBStore
