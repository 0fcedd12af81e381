// Memory that objects share which are made one after the other.
#pragma once

#include "json/with_room.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace TarnConfigStore {

/// Blocks of memory, of 64 KB at most as a rule, in which objects lie one behind the other. A block goes
/// with the last of its objects: one that is kept keeps no more than its block. One thread makes the
/// objects; who has them, shares and drops them as any others.
class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  ~Arena() { Close(); }

  /// As std::make_shared.
  template <class T, class... Arguments>
  std::shared_ptr<T> Make(Arguments&&... arguments) {
    BlockFor(sizeof(T));
    return std::allocate_shared<T>(Allocator<T>(*block_), std::forward<Arguments>(arguments)...);
  }

  /// All the memory that there is beside an object of this type, and at least so much. Nothing of it is
  /// taken yet: it is free again with the next call but of MakeBeside.
  template <class T>
  Room RoomBeside(std::size_t least) {
    BlockFor(sizeof(T) + least);
    return {block_->Left() - kAround - sizeof(T), block_->next};
  }
  /// As MakeWithRoom, with the room that RoomBeside gave, or as much of its beginning as is needed.
  template <class T, class... Arguments>
  std::shared_ptr<T> MakeBeside(const Room& room, Arguments&&... arguments) {
    block_->Take(room.size);
    return std::allocate_shared<T>(Allocator<T>(*block_), room,
                                   std::forward<Arguments>(arguments)...);
  }

 private:
  static constexpr std::size_t kAlignment = alignof(std::max_align_t);
  // What std::allocate_shared puts around an object, and what rounding up takes.
  static constexpr std::size_t kAround = 64;
  static constexpr std::size_t kFirstBlock = 2U << 10U;
  static constexpr std::size_t kLargestBlock = 64U << 10U;

  struct alignas(kAlignment) Block {
    // Objects that are there, and while more may come, one for each that may.
    std::atomic<std::size_t> users;
    std::size_t made = 0;  // objects, whether or not they are there still
    char* next;            // behind all that is taken
    char* end;

    std::size_t Left() const { return static_cast<std::size_t>(end - next); }
    char* Take(std::size_t size) {
      return std::exchange(next, next + (size + kAlignment - 1) / kAlignment * kAlignment);
    }
  };

  template <class Type>
  class Allocator {
   public:
    using value_type = Type;

    explicit Allocator(Block& block) : block_(&block) {}
    template <class Other>
    explicit(false) Allocator(const Allocator<Other>& other) : block_(other.block_) {}

    Type* allocate(std::size_t count) {
      ++block_->made;
      return reinterpret_cast<Type*>(block_->Take(count * sizeof(Type)));
    }
    void deallocate(Type* /*memory*/, std::size_t /*count*/) { Leave(block_, 1); }
    template <class Other>
    bool operator==(const Allocator<Other>& other) const {
      return block_ == other.block_;
    }

   private:
    template <class Other>
    friend class Allocator;

    Block* block_;
  };

  static void Leave(Block* block, std::size_t users) noexcept;

  /// Sees to it that the block that is being filled has room for an object of this size.
  void BlockFor(std::size_t size) {
    const std::size_t needed = size + kAround;
    if (block_ == nullptr || block_->Left() < needed) {
      Open(needed);
    }
  }
  void Open(std::size_t needed);
  void Close() noexcept;

  Block* block_ = nullptr;
  std::size_t blockSize_ = kFirstBlock;
};

}  // namespace TarnConfigStore
