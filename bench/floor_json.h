// JSON as hand-written code for one store would read and write it.
#pragma once

#include "json/json.h"
#include "json/plain_text.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace Benchmarks {

/// Reads the grammar of a text and hands on what stands in it, nothing copied. Leaves to a more careful reader
/// whatever is rare: escapes, a minus zero, and what is no JSON at all.
template <class Handler>
class PlainReader {
 public:
  /// \param text  valid UTF-8, followed by a NUL
  PlainReader(std::string_view text, Handler& handler)
      : at_(text.data()), end_(at_ + text.size()), handler_(handler) {}

  /// False where the text is left to the more careful reader, or the handler says so.
  bool Read() { return Blanks() && Value() && Blanks() && at_ == end_; }

 private:
  bool Blanks() {
    while (*at_ == ' ' || *at_ == '\n' || *at_ == '\t' || *at_ == '\r') {
      ++at_;
    }
    return true;
  }
  bool Take(char wanted) {
    Blanks();
    return *at_ == wanted && (++at_, Blanks());
  }
  bool Word(std::string_view word) {
    return std::string_view(at_, static_cast<std::size_t>(end_ - at_)).starts_with(word) &&
           (at_ += word.size(), true);
  }
  bool Digits() {
    const char* const begin = at_;
    while (*at_ >= '0' && *at_ <= '9') {
      ++at_;
    }
    return at_ != begin;
  }
  bool Number() {
    const char* const begin = at_;
    at_ += *at_ == '-' ? 1 : 0;
    if (*at_ == '0') {
      ++at_;
    } else if (!Digits()) {
      return false;
    }
    bool isInteger = true;
    if (*at_ == '.') {
      isInteger = false;
      ++at_;
      if (!Digits()) {
        return false;
      }
    }
    if (*at_ == 'e' || *at_ == 'E') {
      isInteger = false;
      ++at_;
      at_ += *at_ == '+' || *at_ == '-' ? 1 : 0;
      if (!Digits()) {
        return false;
      }
    }
    const std::string_view text(begin, static_cast<std::size_t>(at_ - begin));
    return text != "-0" && (isInteger ? handler_.Integer(text) : handler_.Real(text));
  }
  // Behind the quote.
  bool Quoted(std::string_view& text) {
    const char* const begin = at_;
    at_ = Json::EndOfPlain(at_, end_);
    text = {begin, static_cast<std::size_t>(at_ - begin)};
    return *at_ == '"' && (++at_, true);
  }
  bool String() {
    std::string_view text;
    return Quoted(text) && handler_.String(text);
  }
  bool Object() {
    std::size_t members = 0;
    if (!handler_.Open(true)) {
      return false;
    }
    Blanks();
    while (*at_ != '}') {
      std::string_view name;
      if ((members > 0 && !Take(',')) || *at_ != '"' || (++at_, !Quoted(name)) ||
          !handler_.Key(name) || !Take(':') || !Value()) {
        return false;
      }
      ++members;
      Blanks();
    }
    ++at_;
    return handler_.Close(true, members);
  }
  bool Array() {
    std::size_t elements = 0;
    if (!handler_.Open(false)) {
      return false;
    }
    Blanks();
    while (*at_ != ']') {
      if ((elements > 0 && !Take(',')) || !Value()) {
        return false;
      }
      ++elements;
      Blanks();
    }
    ++at_;
    return handler_.Close(false, elements);
  }
  bool Value() {
    switch (*at_) {
      case '"':
        return ++at_, String();
      case '{':
        return ++at_, Object();
      case '[':
        return ++at_, Array();
      case 't':
        return Word("true") && handler_.Bool(true);
      case 'f':
        return Word("false") && handler_.Bool(false);
      case 'n':
        return Word("null") && handler_.Null();
      default:
        return Number();
    }
  }

  const char* at_;
  const char* end_;
  Handler& handler_;
};

/// How much memory a text takes up, and how much of a pool its values do at most.
std::size_t RoomForText(std::string_view text);
std::size_t RoomForValues(std::string_view text);

/// The value of a text, as strict as the library: nothing is made up for what is no JSON, std::runtime_error is
/// raised. The value's own texts stand in the room.
/// \param room  of RoomForText, for a copy of the text
/// \param pool  with RoomForValues, or it grows
Json::Value ParseInto(std::string_view text, char* room, Json::Allocator& pool);

/// Values that are read one after the other, each at the expense of the one before.
class ScratchValue {
 public:
  Json::Value& Parse(std::string_view text);
  /// Where the value's memory comes from.
  Json::Allocator& Pool() { return *pool_; }

 private:
  void Reserve(std::size_t size);

  std::size_t capacity_ = 0;
  std::unique_ptr<char[]> memory_;
  std::optional<Json::Allocator> pool_;
  Json::Value value_;
};

/// Texts, made in memory that the next one takes over.
class TextMaker {
 public:
  /// A value's text. Raises std::runtime_error for what JSON cannot say. Valid until the next call.
  std::string_view Make(const Json::Value& value);

  void Put(char character) { *Room(1) = character, ++used_; }
  void Put(std::string_view text);
  /// A string that needs no escapes.
  void PutQuoted(std::string_view plain);
  /// A line's end, and blanks before the next.
  void PutLine(std::size_t blanks);
  std::size_t Size() const { return used_; }
  /// What was put so far.
  std::string_view Text() const { return {text_.get(), used_}; }
  void Cut(std::size_t size) { used_ = size; }

 private:
  char* Room(std::size_t size);
  void PutString(const Json::Value& value);
  void PutDouble(double value);
  template <class Number>
  void PutNumber(Number value);
  void PutValue(const Json::Value& value);

  std::size_t used_ = 0;
  std::size_t capacity_ = 0;
  std::unique_ptr<char[]> text_;
};

}  // namespace Benchmarks
