// Where backups and restores ask the hook of db_testing.h.
#pragma once

#include "db/raising.h"
#include "db/testing_hook.h"

namespace DBStore::internal {

/// Raises where a test has the step fail.
inline void Step(const char* what) {
  if (AskHook(testing::Operation::COPY, what) != 0) {
    RaiseReported();
  }
}

}  // namespace DBStore::internal
