// The allocator of this program and all that it loads. Under the address sanitizer its allocator stands
// behind this one, and sees every block.
#include "faults/injected.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace Faults {
namespace {

// Plain, and used by built-in functions: what the standard library's would be made of may be a copy
// that a sanitizer has instrumented, and allocators run before sanitizers do.
constinit Kind armed = Kind::NONE;
constinit unsigned calls = 0;
constinit bool struck = false;
constinit unsigned failing = 0;
constinit bool failsOn = false;
using Watcher = void (*)(Kind);
constinit Watcher watcher = nullptr;

}  // namespace

void Arm(Kind kind, unsigned n, bool stays) noexcept {
  calls = 0;
  struck = false;
  failing = n;
  failsOn = stays;
  __atomic_store_n(&armed, kind, __ATOMIC_RELEASE);
}

void Watch(void (*tell)(Kind kind)) noexcept {
  __atomic_store_n(&watcher, tell, __ATOMIC_RELEASE);
}

bool Disarm() noexcept {
  __atomic_store_n(&watcher, nullptr, __ATOMIC_RELEASE);
  __atomic_store_n(&armed, Kind::NONE, __ATOMIC_RELEASE);
  return __atomic_load_n(&struck, __ATOMIC_ACQUIRE);
}

bool Strikes(Kind kind) noexcept {
  if (__atomic_load_n(&armed, __ATOMIC_ACQUIRE) != kind) {
    if (const auto tell = __atomic_exchange_n(&watcher, nullptr, __ATOMIC_ACQ_REL)) {
      tell(kind);
      __atomic_store_n(&watcher, tell, __ATOMIC_RELEASE);
    }
    return false;
  }
  const unsigned call = __atomic_add_fetch(&calls, 1, __ATOMIC_RELAXED);
  if (call != failing && !(failsOn && call > failing)) {
    return false;
  }
  __atomic_store_n(&struck, true, __ATOMIC_RELEASE);
  return true;
}

}  // namespace Faults

#ifdef TARN_BEFORE_ADDRESS_SANITIZER
#define BEHIND(name) __interceptor_##name
#else
#define BEHIND(name) __libc_##name
#endif

namespace {

bool NoMemory() noexcept {
  if (!Faults::Strikes(Faults::Kind::ALLOCATION)) {
    return false;
  }
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" {

void* BEHIND(malloc)(std::size_t size);
void* BEHIND(calloc)(std::size_t count, std::size_t size);
void* BEHIND(realloc)(void* block, std::size_t size);
void* BEHIND(memalign)(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) noexcept {
  return NoMemory() ? nullptr : BEHIND(malloc)(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  return NoMemory() ? nullptr : BEHIND(calloc)(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
  return NoMemory() ? nullptr : BEHIND(realloc)(block, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return NoMemory() ? nullptr : BEHIND(memalign)(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
  *block = aligned_alloc(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}

}  // extern "C"

#ifdef TARN_BEFORE_ADDRESS_SANITIZER
// The sanitizer has its own; the system's ask malloc.
void* operator new(std::size_t size) {
  if (void* const block = std::malloc(size)) {
    return block;
  }
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  if (void* const block = aligned_alloc(static_cast<std::size_t>(alignment), size)) {
    return block;
  }
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
#endif
