// The holder of one JSON document.
#pragma once

#include "json/json.h"
#include "json/with_room.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace TarnConfigStore {

class Arena;

/// Owns one JSON value and the memory of everything in it. The first block of memory is sized to
/// the text that the value comes from, because RapidJSON's own default of 64 KB an object is the
/// largest waste there is in a store of small objects. Memory is given back only when the holder
/// goes: values live as long.
class JsonDoc {
 public:
  /// An empty (null) value with room for about this many bytes of values.
  explicit JsonDoc(std::size_t capacity = 0);
  /// The same to be shared, with the room in the same block of memory.
  static std::shared_ptr<JsonDoc> Make(std::size_t capacity = 0);
  /// A copy of the value in a holder with just the room for it.
  static std::shared_ptr<JsonDoc> CopyOf(const JsonDoc& source);
  /// A holder of the value of a stored text, with no more room than that takes up where the text is
  /// short. On failure the value is null.
  /// \param arena  where it is made, unless it is null or the text long
  static std::shared_ptr<JsonDoc> MakeOf(std::string_view text, Json::ParseResult& result,
                                         Arena* arena = nullptr);
  /// For Make.
  explicit JsonDoc(const Room& room);
  /// For MakeOf, of a value that lies in the room already.
  JsonDoc(const Room& room, Json::Value&& value, std::size_t size);
  JsonDoc(const JsonDoc&) = delete;
  JsonDoc& operator=(const JsonDoc&) = delete;

  Json::Value* GetJsonValuePtr() { return &root_; }
  const Json::Value* GetJsonValuePtr() const { return &root_; }
  Json::Allocator& GetAllocator() { return pool_; }
  /// Bytes that its values take up, and those that they left behind.
  std::size_t Size() const { return pool_.Size(); }

  /// Replaces the value by a parsed text; on failure the value is null. See Json::Parse.
  Json::ParseResult Parse(std::string_view text, Json::Origin origin);

  /// Parses a text into a value that this holder has the memory of; on failure it is null.
  Json::ParseResult ParseBeside(std::string_view text, Json::Origin origin, Json::Value& value);

  /// The room that the values of a parsed text of this length take up, as a rule, and the memory's
  /// own header.
  static std::size_t CapacityFor(std::size_t textLength) { return 2 * textLength + kHeader; }

 private:
  static constexpr std::size_t kHeader = 24;

  static std::shared_ptr<JsonDoc> MakeIn(Arena& arena, std::string_view text);

  std::unique_ptr<char[]> buffer_;  // where the room is a block of its own
  Json::Allocator pool_;
  Json::Value root_;
};

}  // namespace TarnConfigStore
