#include "allocation_count.h"

#include <cstddef>

// The C library's own, by the names under which it lets itself be reached beside a replacement.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier)

namespace {

constinit thread_local std::uint64_t allocations = 0;

}  // namespace

// The program's own definitions come before the C library's, for every library in the process. What
// they return is freed by the C library.
extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept {
  ++allocations;
  return __libc_malloc(size);
}
extern "C" __attribute__((visibility("default"))) void* calloc(std::size_t count,
                                                               std::size_t size) noexcept {
  ++allocations;
  return __libc_calloc(count, size);
}
extern "C" __attribute__((visibility("default"))) void* realloc(void* block,
                                                                std::size_t size) noexcept {
  ++allocations;
  return __libc_realloc(block, size);
}

namespace Benchmarks {

std::uint64_t CountAllocations() noexcept {
  return allocations;
}

}  // namespace Benchmarks
