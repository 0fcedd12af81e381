// The quick way through a JSON text.
#pragma once

#include "json/characters.h"
#include "json/escapes.h"
#include "json/plain_text.h"
#include "json/utf8.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Json {

/// Reads the grammar of a text (RFC 8259) and hands on what stands in it:
///   Null(), Bool(value), Number(text, isInteger), String(text, stays), Key(text, stays),
///   Open(isObject), Close(isObject, count)
/// each of which answers whether to go on. A text that does not stay as it is, because it was escaped, is
/// valid during the call. The handler bounds the depth. Knows of nothing but whether all is well: what is
/// not, is read again by those who find out the place and the reason.
template <class Handler>
class PlainReader {
 public:
  PlainReader(std::string_view text, Handler& handler)
      : text_(text), at_(text.data()), end_(at_ + text.size()), handler_(handler) {}

  /// False where the text is no JSON in UTF-8, or the handler says so.
  bool Read() {
    if (!Utf8::IsValid(text_)) {
      return false;
    }
    Blanks();
    if (!Value()) {
      return false;
    }
    Blanks();
    return at_ == end_ && (!escapes_ || FindLoneSurrogate(text_) == std::string_view::npos);
  }

 private:
  char Next() const { return at_ != end_ ? *at_ : '\0'; }
  // Hardly any stored text has one.
  void Blanks() {
    while (at_ != end_ && *at_ <= ' ' &&
           (*at_ == ' ' || *at_ == '\n' || *at_ == '\t' || *at_ == '\r')) {
      ++at_;
    }
  }
  bool Take(char wanted) {
    if (Next() != wanted) {
      return false;
    }
    ++at_;
    Blanks();
    return true;
  }
  bool Word(std::string_view word) {
    if (!std::string_view(at_, static_cast<std::size_t>(end_ - at_)).starts_with(word)) {
      return false;
    }
    at_ += word.size();
    return true;
  }
  bool Number() {
    const char* const begin = at_;
    bool isInteger = false;
    at_ = EndOfNumber(begin, end_, isInteger);
    return at_ != nullptr &&
           handler_.Number({begin, static_cast<std::size_t>(at_ - begin)}, isInteger);
  }
  /// \param handOn  gets the text and whether it stays
  template <class HandOn>
  bool Quoted(const HandOn& handOn) {
    const char* const begin = ++at_;
    at_ = EndOfPlain(begin, end_);
    if (Next() == '"') {
      return handOn(std::string_view(begin, static_cast<std::size_t>(at_++ - begin)), true);
    }
    while (Next() == '\\' && end_ - at_ > 2) {
      at_ = EndOfPlain(at_ + 2, end_);
    }
    if (Next() != '"') {
      return false;
    }
    ++at_;
    escapes_ = true;
    std::string text;
    return ReadEscapes({begin - 1, static_cast<std::size_t>(at_ - begin) + 1}, text) &&
           handOn(text, false);
  }
  bool String() {
    return Quoted([&](std::string_view text, bool stays) { return handler_.String(text, stays); });
  }
  bool Key() {
    if (Next() != '"' ||
        !Quoted([&](std::string_view text, bool stays) { return handler_.Key(text, stays); })) {
      return false;
    }
    Blanks();
    return Take(':');
  }
  template <bool isObject>
  bool Container() {
    constexpr char kLast = isObject ? '}' : ']';
    ++at_;
    Blanks();
    std::size_t count = 0;
    if (!handler_.Open(isObject)) {
      return false;
    }
    for (bool more = Next() != kLast; more; ++count) {
      if constexpr (isObject) {
        if (!Key()) {
          return false;
        }
      }
      if (!Value()) {
        return false;
      }
      Blanks();
      more = Take(',');
    }
    if (Next() != kLast) {
      return false;
    }
    ++at_;
    return handler_.Close(isObject, count);
  }
  bool Value() {
    switch (Next()) {
      case '"':
        return String();
      case '{':
        return Container<true>();
      case '[':
        return Container<false>();
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

  const std::string_view text_;
  const char* at_;
  const char* const end_;
  Handler& handler_;
  bool escapes_ = false;
};

}  // namespace Json
