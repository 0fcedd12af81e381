#include "json/arena.h"

#include <limits>

namespace TarnConfigStore {
namespace {

// More than a block has bytes for.
constexpr std::size_t kFilling = std::numeric_limits<std::size_t>::max() / 2;

}  // namespace

void Arena::Leave(Block* block, std::size_t users) noexcept {
  if (block->users.fetch_sub(users, std::memory_order_acq_rel) == users) {
    ::operator delete(block);
  }
}

void Arena::Open(std::size_t needed) {
  const std::size_t size = std::max(blockSize_, sizeof(Block) + needed);
  char* const memory = static_cast<char*>(::operator new(size));
  Close();
  block_ =
      new (memory) Block{.users = kFilling, .next = memory + sizeof(Block), .end = memory + size};
  blockSize_ = std::min(2 * blockSize_, kLargestBlock);
}

void Arena::Close() noexcept {
  if (block_ != nullptr) {
    Leave(block_, kFilling - block_->made);
    block_ = nullptr;
  }
}

}  // namespace TarnConfigStore
