// The platform's failures, as the library's own.
#pragma once

#include "errors/raise.h"

#include <stdexcept>

namespace TarnConfigStore {

/// Runs steps on the schema store; what the platform raises becomes ConfigStoreException 2000 with
/// its message.
template <class Steps>
auto WithStoreFailures(const Steps& steps) {
  try {
    return steps();
  } catch (const std::runtime_error& failure) {
    ThrowFailure(failure.what());
  }
}

}  // namespace TarnConfigStore
