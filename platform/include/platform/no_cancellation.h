// Steps in which a thread may not be cancelled.
#pragma once

#include <pthread.h>

/// While one lives, its thread is not cancelled (pthreads(7)). A thread that is cancelled leaves its
/// functions as if by an exception: through code that cannot be left so, the engine's, or that
/// promises not to be, which ends the process.
class NoCancellation {
 public:
  NoCancellation() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }
  ~NoCancellation() { pthread_setcancelstate(before_, nullptr); }
  NoCancellation(const NoCancellation&) = delete;
  NoCancellation& operator=(const NoCancellation&) = delete;

 private:
  int before_ = PTHREAD_CANCEL_ENABLE;
};
