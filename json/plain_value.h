// Values made by the quick way through a text.
#pragma once

#include "json/json.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace Json {

/// Reads a text into a value; false where the careful reader has to look at it, which is at all that Parse
/// refuses, but for names that stand twice.
bool ReadPlain(std::string_view text, Origin origin, Value& value, Allocator& pool);

/// Reads a stored text into a value whose parts lie where a pool in this memory has what it is asked for
/// first: behind its own header.
/// \return how much it has to be asked for; nothing where the careful reader has to look at the text, or
///         the memory is too small
std::optional<std::size_t> ReadPlainInPlace(std::string_view text, char* memory, std::size_t size,
                                            Value& value);
std::size_t HeaderOfPool();

/// The value of a short text, made in memory that is gone again soon: only then it is known how much room
/// it takes up, which it is moved to as it is.
class PlainValue {
 public:
  /// For longer texts the room is not worth it.
  static constexpr std::size_t kLongestText = 4096;

  PlainValue(std::string_view text, Origin origin);
  PlainValue(const PlainValue&) = delete;
  PlainValue& operator=(const PlainValue&) = delete;

  /// False where the careful reader has to look at the text, or its value needs uncommonly much room.
  explicit operator bool() const { return done_; }
  /// What the value takes up of a pool.
  std::size_t Room() const { return pool_.Size(); }
  /// Moves the value, which is then gone from here, to a pool that has the room in one piece.
  Value MoveTo(Allocator& pool);

 private:
  alignas(std::max_align_t) std::array<char, 2 * kLongestText> memory_;
  Allocator pool_;
  Value value_;
  bool done_;
};

}  // namespace Json
