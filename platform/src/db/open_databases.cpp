#include "db/open_databases.h"

#include <atomic>
#include <mutex>

namespace DBStore::internal::OpenDatabases {
namespace {

std::mutex lock;
std::size_t open = 0;
std::atomic<std::uint64_t> ever{0};

}  // namespace

void Enter() noexcept {
  const std::lock_guard<std::mutex> guard(lock);
  ++open;
  ever.fetch_add(1, std::memory_order_relaxed);
}

void Leave() noexcept {
  const std::lock_guard<std::mutex> guard(lock);
  --open;
}

void Hold() noexcept {
  lock.lock();
}
void Release() noexcept {
  lock.unlock();
}

std::size_t Count() noexcept {
  return open;
}
std::uint64_t CountEver() noexcept {
  return ever.load(std::memory_order_relaxed);
}

}  // namespace DBStore::internal::OpenDatabases
