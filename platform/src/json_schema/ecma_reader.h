// The text of a pattern while it is read.
#pragma once

#include "json/characters.h"
#include "json/utf8.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace JsonValidator::Ecma {

/// Raised and caught within the translation.
struct Fault {
  std::size_t at;
  std::string what;
};

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  std::size_t At() const { return at_; }
  bool AtEnd() const { return at_ == text_.size(); }
  /// NUL past the end.
  char Peek(std::size_t ahead = 0) const {
    return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
  }
  void Advance(std::size_t bytes) { at_ += bytes; }
  bool Skip(std::string_view wanted) {
    const bool there = text_.substr(at_).starts_with(wanted);
    at_ += there ? wanted.size() : 0;
    return there;
  }

  /// The character at hand, as it is written; the text is UTF-8 and not at its end.
  std::string_view TakeCharacter() {
    const std::string_view character =
        text_.substr(at_, Json::Utf8::SequenceLength(text_.substr(at_)));
    at_ += character.size();
    return character;
  }

  /// The digits at hand as a number, at most kMost; nothing is taken where there are none.
  static constexpr std::size_t kMost = 1'000'000'000;
  std::size_t TakeNumber() {
    std::size_t number = 0;
    for (; Json::IsDigit(Peek()); ++at_) {
      number = number >= kMost / 10 ? kMost : number * 10 + static_cast<std::size_t>(Peek() - '0');
    }
    return number;
  }

  /// What was read from there on, for a message: not all of it where it is long.
  std::string From(std::size_t begin) const {
    constexpr std::size_t kLong = 40;
    std::string_view read = text_.substr(begin, at_ - begin);
    while (read.size() > kLong || !Json::Utf8::IsValid(read)) {
      read.remove_suffix(read.size() > kLong ? read.size() - kLong : 1);
    }
    return std::string(read);
  }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace JsonValidator::Ecma
