// The values of a JSON text that can be taken as they stand there.
#pragma once

#include "json/characters.h"
#include "json/text_words.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Json {

namespace PlainText {

using Word = std::uint64_t;
constexpr Word kOnes = 0x0101010101010101U;
constexpr Word kHighBits = 0x80 * kOnes;

/// A byte's high bit is set where the byte does not stand for itself. The first such one is exact.
constexpr Word SpecialIn(Word word) {
  // Where it is 0 (the first such one is exact) ...
  const auto zeroIn = [](Word bytes) { return (bytes - kOnes) & ~bytes; };
  // ... or, of the last, less than a blank.
  return (zeroIn(word ^ ('"' * kOnes)) | zeroIn(word ^ ('\\' * kOnes)) |
          ((word - ' ' * kOnes) & ~word)) &
         kHighBits;
}

}  // namespace PlainText

/// Where the characters end that stand for themselves in a string: at a quote, a backslash, a control
/// character, or the end. Eight at a time, as most of a store's text is such.
inline const char* EndOfPlain(const char* at, const char* end) {
  using PlainText::Word;
  constexpr int kBitsOfByte = 8;
  if constexpr (std::endian::native == std::endian::little) {
    for (Word word = 0; end - at >= static_cast<std::ptrdiff_t>(sizeof(word)); at += sizeof(word)) {
      std::memcpy(&word, at, sizeof(word));
      if (const Word special = PlainText::SpecialIn(word); special != 0) {
        return at + std::countr_zero(special) / kBitsOfByte;
      }
    }
  }
  while (at != end && *at != '"' && *at != '\\' && static_cast<unsigned char>(*at) >= ' ') {
    ++at;
  }
  return at;
}

/// Whether a text is ASCII, and every character of it stands for itself in a string.
inline bool IsPlainAscii(std::string_view text) {
  PlainText::Word found = 0;
  ForEachWord(text, [&found](PlainText::Word word) {
    found |= PlainText::SpecialIn(word) | (word & PlainText::kHighBits);
  });
  return found == 0;
}

/// Where a number by JSON's grammar (RFC 8259, section 6) ends; null where there is none.
/// \param isInteger  becomes whether it is written without a fraction and an exponent
inline const char* EndOfNumber(const char* at, const char* end, bool& isInteger) {
  const auto skipDigits = [end](const char* from) {
    while (from != end && IsDigit(*from)) {
      ++from;
    }
    return from;
  };
  at += at != end && *at == '-' ? 1 : 0;
  const char* next = at != end && *at == '0' ? at + 1 : skipDigits(at);
  if (next == at) {
    return nullptr;
  }
  const char* const endOfInteger = next;
  if (next != end && *next == '.') {
    at = next + 1;
    next = skipDigits(at);
    if (next == at) {
      return nullptr;
    }
  }
  if (next != end && (*next == 'e' || *next == 'E')) {
    at = next + 1;
    at += at != end && (*at == '+' || *at == '-') ? 1 : 0;
    next = skipDigits(at);
    if (next == at) {
      return nullptr;
    }
  }
  isInteger = next == endOfInteger;
  return next;
}

}  // namespace Json
