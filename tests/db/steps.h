// The steps of whatever changes stores as a whole: making one of them fail, or the last.
#pragma once

#include "platform/db_testing.h"

#include "support/child_process.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

namespace TestSupport {

/// Calls `act` at the n-th step; sets `reached` when it comes to it.
inline void AtStep(int step, bool& reached, const std::function<int()>& act) {
  reached = false;
  DBStore::testing::SetHook(
      [=, &reached](DBStore::testing::Operation asked, std::string_view) mutable {
        if (asked != DBStore::testing::Operation::COPY || step-- != 0) {
          return 0;
        }
        reached = true;
        return act();
      });
}

/// Runs `steps` in children that are killed at one step after the other, until one comes to its end.
/// After each, `check` looks at what is left.
inline int KillAtEachStep(const std::function<void()>& steps,
                          const std::function<void(bool killed)>& check) {
  for (int step = 0;; ++step) {
    SCOPED_TRACE(step);
    const int status = InChild([&] {
      bool reached = false;
      AtStep(step, reached, [] { return raise(SIGKILL); });
      steps();
      return 0;
    });
    EXPECT_TRUE(status == 0 || status == 1000 + SIGKILL) << status;
    check(status != 0);
    if (status == 0 || ::testing::Test::HasFailure()) {
      return step;
    }
  }
}

}  // namespace TestSupport
