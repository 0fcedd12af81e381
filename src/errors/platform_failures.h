// The platform's failures, as the library's own.
#pragma once

#include "errors/raise.h"

#include <stdexcept>

namespace TarnConfigStore {

/// Runs steps that ask something of the platform, which knows nothing of the library's exceptions:
/// a std::runtime_error becomes ConfigStoreException 2000 with its message.
template <class Steps>
auto WithStoreFailures(const Steps& steps) {
  try {
    return steps();
  } catch (const std::runtime_error& failure) {
    ThrowFailure(failure.what());
  }
}

}  // namespace TarnConfigStore
