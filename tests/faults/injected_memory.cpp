// The allocator of this program and all that it loads. Under the address sanitizer its allocator stands
// behind this one, and sees every block.
#include "faults/injected.h"
#include "support/sanitized.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace Faults {
namespace {

constinit std::atomic<Kind> armed{Kind::NONE};
constinit std::atomic<unsigned> calls{0};
constinit std::atomic<bool> struck{false};
constinit unsigned failing = 0;
constinit bool failsOn = false;

}  // namespace

void Arm(Kind kind, unsigned n, bool stays) noexcept {
  calls = 0;
  struck = false;
  failing = n;
  failsOn = stays;
  armed = kind;
}

bool Disarm() noexcept {
  armed = Kind::NONE;
  return struck;
}

bool Strikes(Kind kind) noexcept {
  if (armed.load(std::memory_order_relaxed) != kind) {
    return false;
  }
  const unsigned call = ++calls;
  if (call != failing && !(failsOn && call > failing)) {
    return false;
  }
  struck = true;
  return true;
}

}  // namespace Faults

#ifdef __SANITIZE_ADDRESS__
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

#ifdef __SANITIZE_ADDRESS__
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
