#include "json/json_doc.h"

#include <utility>

namespace TarnConfigStore {
namespace {

// Blocks after the first, for values that are set later.
constexpr std::size_t kChunkSize = 512;
// The block's own header, and a little for the first members.
constexpr std::size_t kMinimumCapacity = 128;
constexpr std::size_t kParseStackSize = 1024;

// Stateless; without one of ours, each pool would allocate its own.
Json::SystemAllocator& BaseAllocator() {
  static Json::SystemAllocator allocator;
  return allocator;
}

std::size_t AtLeastMinimum(std::size_t capacity) {
  return capacity < kMinimumCapacity ? kMinimumCapacity : capacity;
}

}  // namespace

JsonDoc::JsonDoc(std::size_t capacity)
    : buffer_(new char[AtLeastMinimum(capacity)]),
      pool_(buffer_.get(), AtLeastMinimum(capacity), kChunkSize, &BaseAllocator()) {}

// Allocates the block of a holder with more room behind it.
template <class Block>
struct JsonDoc::WithRoom {
  using value_type = Block;

  explicit WithRoom(Room& asked) : room(&asked) {}
  template <class Other>
  explicit(false) WithRoom(const WithRoom<Other>& other) : room(other.room) {}

  Block* allocate(std::size_t count) {
    char* const block = static_cast<char*>(::operator new(count * sizeof(Block) + room->size));
    room->begin = block + count * sizeof(Block);
    return reinterpret_cast<Block*>(block);
  }
  void deallocate(Block* block, std::size_t /*count*/) { ::operator delete(block); }
  template <class Other>
  bool operator==(const WithRoom<Other>& /*other*/) const {
    return true;
  }

  Room* room;
};

std::shared_ptr<JsonDoc> JsonDoc::Make(std::size_t capacity) {
  Room room{AtLeastMinimum(capacity)};
  return std::allocate_shared<JsonDoc>(WithRoom<JsonDoc>(room), room);
}

JsonDoc::JsonDoc(const Room& room) : pool_(room.begin, room.size, kChunkSize, &BaseAllocator()) {}

Json::ParseResult JsonDoc::Parse(std::string_view text, Json::Origin origin) {
  return ParseBeside(text, origin, root_);
}

Json::ParseResult JsonDoc::ParseBeside(std::string_view text, Json::Origin origin,
                                       Json::Value& value) {
  Json::Document parsed(&pool_, kParseStackSize, &BaseAllocator());
  Json::ParseResult result = Json::Parse(text, parsed, origin);
  value.Swap(static_cast<Json::Value&>(parsed));
  return result;
}

}  // namespace TarnConfigStore
