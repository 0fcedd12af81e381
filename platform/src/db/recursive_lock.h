// The lock of one connection.
#pragma once

#include <atomic>
#include <mutex>

namespace DBStore::internal {

/// Tells threads apart. Never given twice, and kept by the one thread of a child that forked.
unsigned ThreadNumber() noexcept;

/// A lock that the thread that holds it may take again.
///
/// A child gives back what its only thread held when it was forked, which std::recursive_mutex does
/// not know how to do. A thread that holds the lock is not cancelled (pthreads(7)): neither the
/// engine nor what is noted of it could be left in the middle of something.
class RecursiveLock {
 public:
  void lock() noexcept;
  bool try_lock() noexcept;
  void unlock() noexcept;

 private:
  bool IsMine() const noexcept;
  void Taken(int cancelState) noexcept;

  std::mutex mutex_;
  std::atomic<unsigned> owner_{0};  // 0 for none
  unsigned depth_ = 0;
  int cancelState_ = 0;  // of the owner, when it took the lock
};

}  // namespace DBStore::internal
