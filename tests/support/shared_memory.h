// Memory that a process has in common with its children.
#pragma once

#include <new>
#include <stdexcept>
#include <sys/mman.h>

namespace TestSupport {

template <class T>
class SharedMemory {
 public:
  SharedMemory()
      : memory_(
            mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
    if (memory_ == MAP_FAILED) {
      throw std::runtime_error("no memory to share with children");
    }
    new (memory_) T();
  }
  ~SharedMemory() { munmap(memory_, sizeof(T)); }
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;

  T& operator*() const { return *static_cast<T*>(memory_); }
  T* operator->() const { return static_cast<T*>(memory_); }

 private:
  void* memory_;
};

}  // namespace TestSupport
