#include "db/write_queue.h"

#include "platform/process_locks.h"

#include "db/recursive_lock.h"
#include "process/clock.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>

namespace DBStore::internal {
namespace {

using ProcessLocks::Guard;
using ProcessLocks::Rank;

// Under the lock of the connection pool: those who have their turn and those who wait for it, in
// the order in which they came.
constinit WriteQueue::Place* head = nullptr;
constinit std::atomic<std::size_t> length{0};

}  // namespace

bool WriteQueue::Enter(Place& place, const FileIdentity& file, int& limit) {
  {
    const Guard guard(Rank::CONNECTION_POOL);
    place.levels_.assign(1, ThreadNumber());
    place.file_ = file;
    place.next_ = nullptr;
    place.first_ = true;
    Place** end = &head;
    for (; *end != nullptr; end = &(*end)->next_) {
      place.first_ = place.first_ && !place.IsBehind(**end);
    }
    *end = &place;
    length.fetch_add(1, std::memory_order_relaxed);
    if (place.first_) {
      return true;
    }
  }
  const std::int64_t began = Clock::Now();
  bool first = false;
  {
    std::unique_lock<std::mutex> lock(place.mutex_);
    first = place.isFirst_.wait_for(lock, std::chrono::milliseconds(limit),
                                    [&place] { return place.first_; });
  }
  constexpr std::int64_t kMillisecond = 1'000'000;
  limit = std::max(0, limit - static_cast<int>((Clock::Now() - began) / kMillisecond));
  if (!first) {
    Leave(place);
  }
  return first;
}

void WriteQueue::BeginLevel(Place& place) {
  const Guard guard(Rank::CONNECTION_POOL);
  place.levels_.push_back(ThreadNumber());
}

void WriteQueue::EndLevel(Place& place) noexcept {
  const Guard guard(Rank::CONNECTION_POOL);
  std::vector<unsigned>& levels = place.levels_;
  const auto mine = std::find(levels.rbegin(), levels.rend(), ThreadNumber());
  if (mine != levels.rend()) {
    levels.erase(std::next(mine).base());
  } else if (!levels.empty()) {
    levels.pop_back();
  }
}

void WriteQueue::Leave(Place& place) noexcept {
  const Guard guard(Rank::CONNECTION_POOL);
  Place** link = &head;
  while (*link != nullptr && *link != &place) {
    link = &(*link)->next_;
  }
  if (*link == nullptr) {
    return;
  }
  *link = place.next_;
  length.fetch_sub(1, std::memory_order_relaxed);
  place.levels_.clear();
  const bool wasFirst = place.first_;
  place.first_ = false;
  for (Place* next = head; wasFirst && next != nullptr; next = next->next_) {
    if (next->IsBehind(place)) {
      const std::lock_guard<std::mutex> lock(next->mutex_);
      next->first_ = true;
      next->isFirst_.notify_one();
      return;
    }
  }
}

bool WriteQueue::ThisThreadWritesBeside(const Place& place, const FileIdentity& file) {
  // This thread sees at least what it did itself.
  if (length.load(std::memory_order_relaxed) == 0) {
    return false;
  }
  const Guard guard(Rank::CONNECTION_POOL);
  for (const Place* other = head; other != nullptr; other = other->next_) {
    const std::vector<unsigned>& levels = other->levels_;
    if (other != &place && other->file_.IsSameFile(file) &&
        std::find(levels.begin(), levels.end(), ThreadNumber()) != levels.end()) {
      return true;
    }
  }
  return false;
}

void WriteQueue::ForgetAll() noexcept {
  head = nullptr;
  length.store(0, std::memory_order_relaxed);
}

}  // namespace DBStore::internal
