#include "json_schema/utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace JsonValidator::Utf8 {
namespace {

bool InRange(unsigned char byte, unsigned char low, unsigned char high) {
  return byte >= low && byte <= high;
}

/// Eight bytes at a time, as most texts are.
bool IsAscii(std::string_view text) {
  using Word = std::uint64_t;
  constexpr Word kHighBits = 0x8080808080808080U;
  Word bits = 0;
  const char* at = text.data();
  std::size_t rest = text.size();
  for (Word word = 0; rest >= sizeof(word); rest -= sizeof(word), at += sizeof(word)) {
    std::memcpy(&word, at, sizeof(word));
    bits |= word;
  }
  for (; rest > 0; --rest) {
    bits |= static_cast<unsigned char>(*at++);
  }
  return (bits & kHighBits) == 0;
}

}  // namespace

std::size_t SequenceLength(std::string_view text) noexcept {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (text.empty()) {
    return 0;
  }
  const unsigned char first = byte(0);
  if (first < 0x80) {
    return 1;
  }
  const std::size_t length = InRange(first, 0xC2, 0xDF)   ? 2
                             : InRange(first, 0xE0, 0xEF) ? 3
                             : InRange(first, 0xF0, 0xF4) ? 4
                                                          : 0;
  if (length == 0 || text.size() < length) {
    return 0;
  }
  // The first byte narrows the second: overlong forms, surrogates and what is past U+10FFFF.
  const unsigned char low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const unsigned char high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (!InRange(byte(1), low, high)) {
    return 0;
  }
  for (std::size_t i = 2; i < length; ++i) {
    if (!InRange(byte(i), 0x80, 0xBF)) {
      return 0;
    }
  }
  return length;
}

bool IsValid(std::string_view text) noexcept {
  if (IsAscii(text)) {
    return true;
  }
  while (!text.empty()) {
    const std::size_t length = SequenceLength(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

std::size_t CountCharacters(std::string_view text) noexcept {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
  }));
}

std::string Repaired(std::string_view text) {
  if (IsValid(text)) {
    return std::string(text);
  }
  std::string repaired;
  while (!text.empty()) {
    const std::size_t length = SequenceLength(text);
    if (length == 0) {
      repaired += "\xEF\xBF\xBD";
      text.remove_prefix(1);
    } else {
      repaired += text.substr(0, length);
      text.remove_prefix(length);
    }
  }
  return repaired;
}

}  // namespace JsonValidator::Utf8
