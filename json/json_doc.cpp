#include "json/json_doc.h"

#include "json/arena.h"
#include "json/plain_value.h"

#include <algorithm>
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

std::shared_ptr<JsonDoc> JsonDoc::Make(std::size_t capacity) {
  return MakeWithRoom<JsonDoc>(AtLeastMinimum(capacity));
}

std::shared_ptr<JsonDoc> JsonDoc::MakeIn(Arena& arena, std::string_view text) {
  constexpr std::size_t kLeast = 8;
  Room room = arena.RoomBeside<JsonDoc>(CapacityFor(text.size()));
  Json::Value value;
  const auto size = Json::ReadPlainInPlace(text, room.begin, room.size, value);
  if (!size) {
    return nullptr;
  }
  room.size = Json::HeaderOfPool() + std::max(*size, kLeast);
  return arena.MakeBeside<JsonDoc>(room, std::move(value), *size);
}

std::shared_ptr<JsonDoc> JsonDoc::MakeOf(std::string_view text, Json::ParseResult& result,
                                         Arena* arena) {
  if (text.size() <= Json::PlainValue::kLongestText) {
    if (auto document = arena == nullptr ? nullptr : MakeIn(*arena, text)) {
      result = {};
      return document;
    }
    if (Json::PlainValue value(text, Json::Origin::STORED); value) {
      result = {};
      auto document = Make(Json::HeaderOfPool() + value.Room());
      document->root_ = value.MoveTo(document->pool_);
      return document;
    }
  }
  auto document = Make(CapacityFor(text.size()));
  result = document->Parse(text, Json::Origin::STORED);
  return document;
}

std::shared_ptr<JsonDoc> JsonDoc::CopyOf(const JsonDoc& source) {
  auto copy = Make(Json::HeaderOfPool() + source.Size());
  Json::CopyInto(copy->root_, source.root_, copy->pool_);
  return copy;
}

JsonDoc::JsonDoc(const Room& room) : pool_(room.begin, room.size, kChunkSize, &BaseAllocator()) {}

JsonDoc::JsonDoc(const Room& room, Json::Value&& value, std::size_t size) : JsonDoc(room) {
  pool_.Malloc(size);
  root_ = std::move(value);
}

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
