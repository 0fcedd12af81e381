// Seams of the database layer for tests and measurements. Nothing in the library uses them; a
// platform has them so that the library's tests run on it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
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
  DETACH,
  COPY  ///< a step of a backup or restore (host_backup.h), or of bringing a store's tables over
        ///< (host_setup.h), which `detail` names
};

/// Asked before each operation of the database layer, once, on the thread that calls it; `detail` is
/// the SQL text or the key, where there is one. Not asked where the connection or the statement is
/// empty. Answering anything but 0 makes the operation fail with that status without touching the
/// database (GetConnection and Prepare then return an empty handle). An empty function removes the
/// hook; it may be replaced while other threads are inside it.
using Hook = std::function<int(Operation operation, std::string_view detail)>;
void SetHook(Hook hook);

/// How often the process opened a database and prepared a statement so far, as often as its engine
/// did: for platforms that promise to do neither twice.
struct Counters {
  std::uint64_t opens = 0;
  std::uint64_t prepares = 0;
};
Counters GetCounters();

/// The name by which SQLite, in this process, opens the store that GetConnection would open, for
/// looking at it past the layer: a path or a URI.
std::string StoreName();

}  // namespace DBStore::testing
