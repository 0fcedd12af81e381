// Seams of the database layer for tests and measurements. Nothing in the library uses them.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace DBStore::testing {

enum class Operation {
  GET_CONNECTION,
  BEGIN,
  COMMIT,
  CANCEL,
  READ_KEY_VALUE,
  WRITE_KEY_VALUE,
  PREPARE,
  EXECUTE,
  ATTACH,
  DETACH
};

/// Asked before each operation of the database layer; `detail` is the SQL text or the key, where
/// there is one. Answering anything but 0 makes the operation fail with that status without
/// touching the database (GetConnection and Prepare then return an empty handle). An empty function
/// removes the hook.
using Hook = std::function<int(Operation operation, std::string_view detail)>;
void SetHook(Hook hook);

/// How often the process opened a database file and prepared a statement so far.
struct Counters {
  std::uint64_t opens = 0;
  std::uint64_t prepares = 0;
};
Counters GetCounters();

}  // namespace DBStore::testing
