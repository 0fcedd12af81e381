// Operations whose turn has not come yet.
#pragma once

namespace TarnConfigStore {

/// Raises ConfigStoreException 2000 "OPERATION is not available yet".
[[noreturn]] void ThrowNotAvailable(const char* operation);

}  // namespace TarnConfigStore
