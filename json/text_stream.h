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

/// The rest of such a text, from a value on that the reader has to look at more closely.
struct CopiedTextStream : TextStream {
  explicit CopiedTextStream(const TextStream& text) : TextStream(text) {}
};

/// What became of a value that the reader stands before.
enum class Passed { YES, REFUSED, NOT_PLAIN };

/// Hands a string without escapes on from where it stands, and leaves any other alone; the reader
/// copies each before it hands it on.
template <class Handler>
Passed PassString(UnwatchedTextStream& text, Handler& handler, bool isKey) {
  const char* const begin = text.next + 1;
  const char* const end = EndOfPlain(begin, text.end);
  if (end == text.end || *end != '"') {
    return Passed::NOT_PLAIN;
  }
  text.next = end + 1;
  const auto length = static_cast<rapidjson::SizeType>(end - begin);
  return (isKey ? handler.Key(begin, length, true) : handler.String(begin, length, true))
             ? Passed::YES
             : Passed::REFUSED;
}

/// The same for a number.
template <class Handler>
Passed PassNumber(UnwatchedTextStream& text, Handler& handler) {
  const char* const begin = text.next;
  const char* const end = EndOfNumber(begin, text.end);
  if (end == nullptr) {
    return Passed::NOT_PLAIN;
  }
  text.next = end;
  return handler.RawNumber(begin, static_cast<rapidjson::SizeType>(end - begin), true)
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
struct rapidjson::StreamTraits<Json::CopiedTextStream> {
  enum { copyOptimization = 1 };
};

template <>
inline void rapidjson::SkipWhitespace(Json::UnwatchedTextStream& text) {
  while (text.next != text.end &&
         (*text.next == ' ' || *text.next == '\n' || *text.next == '\r' || *text.next == '\t')) {
    ++text.next;
  }
}

// The reader's own way through the characters of a string is one at a time, but for streams of its
// own on some processors, where it lets control characters pass.
template <>
template <>
inline void Json::Reader::ScanCopyUnescapedString(Json::CopiedTextStream& from,
                                                  Json::Reader::StackStream<char>& to) {
  const char* const end = Json::EndOfPlain(from.next, from.end);
  if (const auto length = static_cast<rapidjson::SizeType>(end - from.next); length > 0) {
    std::memcpy(to.Push(length), from.next, length);
  }
  from.next = end;
}

// NOLINTBEGIN(bugprone-macro-parentheses): a type stands in none
/// Makes the reader, with numbers as strings, hand values on to one kind of handler in that way.
#define TARN_PASS_PLAIN_VALUES(Handler)                                           \
  template <>                                                                     \
  template <>                                                                     \
  inline void Json::Reader::ParseString<rapidjson::kParseNumbersAsStringsFlag>(   \
      Json::UnwatchedTextStream & text, Handler & handler, bool isKey) {          \
    const Json::Passed passed = Json::PassString(text, handler, isKey);           \
    if (passed == Json::Passed::NOT_PLAIN) {                                      \
      Json::CopiedTextStream copied(text);                                        \
      ParseString<rapidjson::kParseNumbersAsStringsFlag>(copied, handler, isKey); \
      text.next = copied.next;                                                    \
    } else if (passed == Json::Passed::REFUSED) {                                 \
      SetParseError(rapidjson::kParseErrorTermination, text.Tell());              \
    }                                                                             \
  }                                                                               \
  template <>                                                                     \
  template <>                                                                     \
  inline void Json::Reader::ParseNumber<rapidjson::kParseNumbersAsStringsFlag>(   \
      Json::UnwatchedTextStream & text, Handler & handler) {                      \
    const Json::Passed passed = Json::PassNumber(text, handler);                  \
    if (passed == Json::Passed::NOT_PLAIN) {                                      \
      Json::CopiedTextStream copied(text);                                        \
      ParseNumber<rapidjson::kParseNumbersAsStringsFlag>(copied, handler);        \
      text.next = copied.next;                                                    \
    } else if (passed == Json::Passed::REFUSED) {                                 \
      SetParseError(rapidjson::kParseErrorTermination, text.Tell());              \
    }                                                                             \
  }
// NOLINTEND(bugprone-macro-parentheses)
