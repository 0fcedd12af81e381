// What SQLite asks of the disk, written down.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Durability {

/// One thing that changes what the disk holds, or would hold after a loss of power.
struct DiskEvent {
  enum class Kind {
    WRITE,
    TRUNCATE,  ///< to `offset`
    SYNC,      ///< all that was done to the file so far is safe
    REMOVE,
    PROMISE,  ///< no file's: a caller was told that what it did is done
  };
  Kind kind;
  std::string file = {};
  std::int64_t offset = 0;
  std::string bytes = {};
};

/// Files by name. What they hold is safe.
using Files = std::map<std::string, std::string>;

/// Stands before SQLite's own file system, as the process's, while it lives. It changes nothing. What
/// lies in shared memory is no disk's: it is left out. For one thread.
class RecordedDisk {
 public:
  RecordedDisk();
  ~RecordedDisk();
  RecordedDisk(const RecordedDisk&) = delete;
  RecordedDisk& operator=(const RecordedDisk&) = delete;

  /// Begins to write down, of the files of a directory.
  void Record(const std::string& directory);
  void Promise();

  /// The files as they were at first.
  const Files& Before() const { return before_; }
  const std::vector<DiskEvent>& Events() const { return events_; }
  void Add(DiskEvent event);

 private:
  std::string directory_;
  Files before_;
  std::vector<DiskEvent> events_;
};

}  // namespace Durability
