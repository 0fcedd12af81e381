// How RapidJSON's reader, the careful one, is given a text.
#pragma once

#include "json/json.h"

#include <rapidjson/reader.h>

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

using Reader = rapidjson::GenericReader<Encoding, Encoding, SystemAllocator>;

}  // namespace Json
