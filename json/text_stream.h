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

/// The rest of such a text, from a string on that has to be copied to be read.
struct EscapedTextStream : TextStream {
  explicit EscapedTextStream(const TextStream& text) : TextStream(text) {}
};

/// What became of a string that the reader stands before.
enum class Passed { YES, REFUSED, HAS_ESCAPES };

/// Hands a string without escapes on from where it stands, and leaves any other alone; the reader
/// copies each before it hands it on.
template <class Handler>
Passed PassPlainString(UnwatchedTextStream& text, Handler& handler, bool isKey) {
  const char* const begin = text.next + 1;
  const char* const end = EndOfPlain(begin, text.end);
  if (end == text.end || *end != '"') {
    return Passed::HAS_ESCAPES;
  }
  text.next = end + 1;
  const auto length = static_cast<rapidjson::SizeType>(end - begin);
  return (isKey ? handler.Key(begin, length, true) : handler.String(begin, length, true))
             ? Passed::YES
             : Passed::REFUSED;
}

using Reader = rapidjson::GenericReader<Encoding, Encoding, SystemAllocator>;

}  // namespace Json

template <>
struct rapidjson::StreamTraits<Json::UnwatchedTextStream> {
  enum { copyOptimization = 1 };
};
template <>
struct rapidjson::StreamTraits<Json::EscapedTextStream> {
  enum { copyOptimization = 1 };
};

// The reader's own way through the characters of a string is one at a time, but for streams of its
// own on some processors, where it lets control characters pass.
template <>
template <>
inline void Json::Reader::ScanCopyUnescapedString(Json::EscapedTextStream& from,
                                                  Json::Reader::StackStream<char>& to) {
  const char* const end = Json::EndOfPlain(from.next, from.end);
  if (const auto length = static_cast<rapidjson::SizeType>(end - from.next); length > 0) {
    std::memcpy(to.Push(length), from.next, length);
  }
  from.next = end;
}

/// Makes the reader, with numbers as strings, hand such strings on to one kind of handler in that way.
#define TARN_PASS_PLAIN_STRINGS(Handler)                                           \
  template <>                                                                      \
  template <>                                                                      \
  inline void Json::Reader::ParseString<rapidjson::kParseNumbersAsStringsFlag>(    \
      Json::UnwatchedTextStream & text, Handler & handler, bool isKey) {           \
    const Json::Passed passed = Json::PassPlainString(text, handler, isKey);       \
    if (passed == Json::Passed::HAS_ESCAPES) {                                     \
      Json::EscapedTextStream escaped(text);                                       \
      ParseString<rapidjson::kParseNumbersAsStringsFlag>(escaped, handler, isKey); \
      text.next = escaped.next;                                                    \
    } else if (passed == Json::Passed::REFUSED) {                                  \
      SetParseError(rapidjson::kParseErrorTermination, text.Tell());               \
    }                                                                              \
  }
