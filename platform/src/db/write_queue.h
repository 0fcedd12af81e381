// The writers of this process, one behind the other.
#pragma once

#include "db/database_file.h"

#include <condition_variable>
#include <mutex>
#include <vector>

namespace DBStore::internal {

/// A database has one writer at a time. The engine lets its connections find out by trying again
/// and again; those of one process need not: they queue here, in the order in which they came, and
/// only the first of them tries. So threads do not starve each other, and a process with many of
/// them takes no more of the turns than another.
///
/// Thread-safe. In the child of a fork the queue is empty.
class WriteQueue {
 public:
  /// What one connection has in the queue.
  class Place {
   public:
    Place() = default;
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

   private:
    friend class WriteQueue;
    bool IsBehind(const Place& other) const noexcept { return file_.IsSameFile(other.file_); }

    FileIdentity file_;
    std::vector<unsigned> levels_;  // the threads that began the levels that are open
    Place* next_ = nullptr;
    bool first_ = false;  // of those of its file
    std::mutex mutex_;
    std::condition_variable isFirst_;
  };

  /// Waits until everybody who came before is done with the file, and then begins a level.
  /// \param limit  milliseconds; what is left of them afterwards
  /// \return false when the limit passed: the connection is not in the queue then
  static bool Enter(Place& place, const FileIdentity& file, int& limit);
  /// Begins a level within what is open.
  static void BeginLevel(Place& place);
  /// Ends the innermost level of this thread, or, where it has none, the innermost.
  static void EndLevel(Place& place) noexcept;
  /// Leaves the queue, whatever is open.
  static void Leave(Place& place) noexcept;

  /// Whether the calling thread has a level open on another connection to the same file: waiting
  /// for its end would be waiting for oneself.
  static bool ThisThreadWritesBeside(const Place& place, const FileIdentity& file);

  /// In the child of a fork, with the lock held: nobody of the parent's is there.
  static void ForgetAll() noexcept;
};

}  // namespace DBStore::internal
