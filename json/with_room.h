// Objects to be shared that bring memory of their own along, in the one block that they lie in.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace TarnConfigStore {

/// The memory behind an object; there once the object is being made, and as long as its block.
struct Room {
  std::size_t size;
  char* begin = nullptr;
};

/// Allocates the block of an object with its room behind it.
template <class Block>
class RoomAllocator {
 public:
  using value_type = Block;

  explicit RoomAllocator(Room& asked) : room_(&asked) {}
  template <class Other>
  explicit(false) RoomAllocator(const RoomAllocator<Other>& other) : room_(other.room_) {}

  Block* allocate(std::size_t count) {
    char* const block = static_cast<char*>(::operator new(count * sizeof(Block) + room_->size));
    room_->begin = block + count * sizeof(Block);
    return reinterpret_cast<Block*>(block);
  }
  void deallocate(Block* block, std::size_t /*count*/) { ::operator delete(block); }
  template <class Other>
  bool operator==(const RoomAllocator<Other>& /*other*/) const {
    return true;
  }

 private:
  template <class Other>
  friend class RoomAllocator;

  Room* room_;
};

/// As std::make_shared. The object is made of its room and what else is given.
template <class T, class... Arguments>
std::shared_ptr<T> MakeWithRoom(std::size_t size, Arguments&&... arguments) {
  Room room{size};
  return std::allocate_shared<T>(RoomAllocator<T>(room), std::as_const(room),
                                 std::forward<Arguments>(arguments)...);
}

}  // namespace TarnConfigStore
