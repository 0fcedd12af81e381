// How RapidJSON's reader is given a text.
#pragma once

#include "json/json.h"
#include "json/plain_text.h"

#include <rapidjson/reader.h>

#include <cstring>
#include <string_view>

namespace Json {

/// A text with a known end, which need not be followed by a NUL.
struct TextStream {
  using Ch = char;
  explicit TextStream(std::string_view text)
      : begin(text.data()), next(begin), end(begin + text.size()) {}
  Ch Peek() const { return next == end ? '\0' : *next; }
  Ch Take() { return next == end ? '\0' : *next++; }
  std::size_t Tell() const { return static_cast<std::size_t>(next - begin); }
  // Only writable streams are asked for these.
  Ch* PutBegin() { RaiseAssertion(__FILE__, __LINE__, "read-only stream"); }
  void Put(Ch /*character*/) { RaiseAssertion(__FILE__, __LINE__, "read-only stream"); }
  void Flush() { RaiseAssertion(__FILE__, __LINE__, "read-only stream"); }
  std::size_t PutEnd(Ch* /*begin*/) { RaiseAssertion(__FILE__, __LINE__, "read-only stream"); }

  const char* begin;
  const char* next;
  const char* end;
};

/// The same, where nobody asks how far it is in the middle of a value: the reader then keeps its
/// place in registers, which makes reading a fifth faster. Does not look at the encoding.
struct UnwatchedTextStream : TextStream {
  using TextStream::TextStream;
};

using Reader = rapidjson::GenericReader<Encoding, Encoding, SystemAllocator>;

}  // namespace Json

template <>
struct rapidjson::StreamTraits<Json::UnwatchedTextStream> {
  enum { copyOptimization = 1 };
};

// The reader's own way through the characters of a string is one at a time, but for streams of its
// own on some processors, where it lets control characters pass.
template <>
template <>
inline void Json::Reader::ScanCopyUnescapedString(Json::UnwatchedTextStream& from,
                                                  Json::Reader::StackStream<char>& to) {
  const char* const end = Json::EndOfPlain(from.next, from.end);
  if (const auto length = static_cast<rapidjson::SizeType>(end - from.next); length > 0) {
    std::memcpy(to.Push(length), from.next, length);
  }
  from.next = end;
}
