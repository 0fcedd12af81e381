#include "db/testing_hook.h"

#include "db/last_error.h"
#include "db/open_databases.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace DBStore {
namespace {

std::mutex hookLock;
std::atomic<std::uint64_t> prepares{0};

// Shared, so that a hook may be replaced while another thread is inside it.
std::shared_ptr<const testing::Hook>& CurrentHook() {
  static auto& hook = *new std::shared_ptr<const testing::Hook>;
  return hook;
}

}  // namespace

namespace testing {

void SetHook(Hook hook) {
  const bool set = static_cast<bool>(hook);
  auto next = std::make_shared<const Hook>(std::move(hook));
  const std::lock_guard<std::mutex> guard(hookLock);
  CurrentHook().swap(next);
  internal::hookIsSet.store(set, std::memory_order_relaxed);
}

Counters GetCounters() {
  return {internal::OpenDatabases::CountEver(), prepares.load(std::memory_order_relaxed)};
}

}  // namespace testing

namespace internal {

std::atomic<bool> hookIsSet{false};

int AskHookThatIsSet(testing::Operation operation, std::string_view detail) {
  std::shared_ptr<const testing::Hook> hook;
  {
    const std::lock_guard<std::mutex> guard(hookLock);
    hook = CurrentHook();
  }
  const int status = hook && *hook ? (*hook)(operation, detail) : 0;
  if (status != 0) {
    ReportFailure(ErrorKindOf(status), status, "refused by a test: " + std::string(detail));
  }
  return status;
}

void CountPrepare() noexcept {
  prepares.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace internal
}  // namespace DBStore
