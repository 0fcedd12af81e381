#include "sync_count.h"

#include <atomic>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<std::uint64_t> syncs{0};

int Sync(long call, int file) {
  syncs.fetch_add(1, std::memory_order_relaxed);
  return static_cast<int>(syscall(call, file));
}

}  // namespace

// The program's own definitions come before the C library's, for SQLite too.
extern "C" __attribute__((visibility("default"))) int fsync(int file) {
  return Sync(SYS_fsync, file);
}
extern "C" __attribute__((visibility("default"))) int fdatasync(int file) {
  return Sync(SYS_fdatasync, file);
}

namespace Benchmarks {

std::uint64_t CountSyncs() {
  return syncs.load(std::memory_order_relaxed);
}

}  // namespace Benchmarks
