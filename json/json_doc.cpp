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

Json::ParseResult JsonDoc::Parse(std::string_view text, Json::Origin origin) {
  Json::Document parsed(&pool_, kParseStackSize, &BaseAllocator());
  Json::ParseResult result = Json::Parse(text, parsed, origin);
  root_.Swap(static_cast<Json::Value&>(parsed));
  return result;
}

}  // namespace TarnConfigStore
