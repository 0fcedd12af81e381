#include "db/testing_hook.h"

#include "platform/made_once.h"
#include "platform/process_locks.h"

#include "db/last_error.h"
#include "db/open_databases.h"

#include <memory>
#include <string>
#include <utility>

namespace DBStore {
namespace {

using ProcessLocks::Guard;
using ProcessLocks::Rank;

constinit std::atomic<std::uint64_t> prepares{0};

// Under the lock. Shared, so that a hook may be replaced while another thread is inside it.
constinit MadeOnce<std::shared_ptr<const testing::Hook>> current;

}  // namespace

namespace testing {

void SetHook(Hook hook) {
  const bool set = static_cast<bool>(hook);
  auto next = std::make_shared<const Hook>(std::move(hook));
  const Guard guard(Rank::TESTING_HOOK);
  current.Get().swap(next);
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
    const Guard guard(Rank::TESTING_HOOK);
    hook = current.Get();
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
