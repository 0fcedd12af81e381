// Where the operations of the database layer ask the hook of db_testing.h.
#pragma once

#include "platform/db_testing.h"

#include <atomic>
#include <string_view>

namespace DBStore::internal {

extern std::atomic<bool> hookIsSet;

int AskHookThatIsSet(testing::Operation operation, std::string_view detail);

/// What the operation has to answer instead of doing anything, or 0.
inline int AskHook(testing::Operation operation, std::string_view detail = {}) {
  return hookIsSet.load(std::memory_order_relaxed) ? AskHookThatIsSet(operation, detail) : 0;
}

void CountPrepare() noexcept;

}  // namespace DBStore::internal
