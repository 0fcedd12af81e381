// Values of the process that are made when they are first asked for.
#pragma once

#include <atomic>
#include <memory>

/// Never destroyed: callers that run while the process exits still find the value. Threads may make
/// it at once, and the first one's stays: nobody waits for another, least of all the child of a fork
/// for a thread that it does not have. For variables of static storage duration, `constinit`.
template <class T>
class MadeOnce {
 public:
  constexpr MadeOnce() noexcept = default;
  MadeOnce(const MadeOnce&) = delete;
  MadeOnce& operator=(const MadeOnce&) = delete;

  /// \param make  returns the value, unless there is one; what it raises passes through
  template <class Make>
  T& Get(const Make& make) {
    T* value = Find();
    if (value == nullptr) {
      std::unique_ptr<T> made(new T(make()));
      if (made_.compare_exchange_strong(value, made.get(), std::memory_order_acq_rel)) {
        value = made.release();
      }
    }
    return *value;
  }
  T& Get() {
    return Get([] { return T(); });
  }

  /// Null while nobody has asked.
  T* Find() const noexcept { return made_.load(std::memory_order_acquire); }

 private:
  std::atomic<T*> made_{nullptr};
};
