#include "db/recursive_lock.h"

#include <pthread.h>

namespace DBStore::internal {
namespace {

constinit std::atomic<unsigned> threads{0};

int DisableCancelling() noexcept {
  int before = PTHREAD_CANCEL_ENABLE;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
  return before;
}

}  // namespace

unsigned ThreadNumber() noexcept {
  constinit thread_local unsigned number = 0;
  if (number == 0) {
    number = threads.fetch_add(1, std::memory_order_relaxed) + 1;
  }
  return number;
}

// No other thread ever writes this one's number.
bool RecursiveLock::IsMine() const noexcept {
  return owner_.load(std::memory_order_relaxed) == ThreadNumber();
}

void RecursiveLock::Taken(int cancelState) noexcept {
  owner_.store(ThreadNumber(), std::memory_order_relaxed);
  depth_ = 1;
  cancelState_ = cancelState;
}

void RecursiveLock::lock() noexcept {
  if (IsMine()) {
    ++depth_;
    return;
  }
  const int cancelState = DisableCancelling();
  mutex_.lock();
  Taken(cancelState);
}

bool RecursiveLock::try_lock() noexcept {
  if (IsMine()) {
    ++depth_;
    return true;
  }
  const int cancelState = DisableCancelling();
  if (!mutex_.try_lock()) {
    pthread_setcancelstate(cancelState, nullptr);
    return false;
  }
  Taken(cancelState);
  return true;
}

void RecursiveLock::unlock() noexcept {
  if (--depth_ > 0) {
    return;
  }
  const int cancelState = cancelState_;
  owner_.store(0, std::memory_order_relaxed);
  mutex_.unlock();
  pthread_setcancelstate(cancelState, nullptr);
}

}  // namespace DBStore::internal
