#include "json/utf8.h"

#include <algorithm>
#include <cstdint>

namespace Json::Utf8 {
namespace {

bool InRange(unsigned char byte, unsigned char low, unsigned char high) {
  return byte >= low && byte <= high;
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

std::string_view Fitting(std::string_view text, std::size_t most) noexcept {
  std::size_t length = std::min(text.size(), most);
  while (length < text.size() && length > 0 &&
         (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
    --length;
  }
  return text.substr(0, length);
}

char32_t CodePointOf(std::string_view character) noexcept {
  constexpr unsigned char kBitsOfFirst[] = {0, 0x7F, 0x1F, 0x0F, 0x07};  // by length
  char32_t codePoint = 0;
  for (std::size_t i = 0; i < character.size(); ++i) {
    const unsigned char bits = i == 0 ? kBitsOfFirst[character.size()] : 0x3F;
    codePoint = codePoint << 6U | (static_cast<unsigned char>(character[i]) & bits);
  }
  return codePoint;
}

bool IsValidBeyondAscii(std::string_view text) noexcept {
  constexpr std::size_t kStride = 8;
  while (!text.empty()) {
    if (text.size() >= kStride && IsAscii(text.substr(0, kStride))) {
      text.remove_prefix(kStride);
      continue;
    }
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

namespace {

// Of a valid sequence.
bool IsControl(std::string_view sequence) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(sequence[i]); };
  constexpr unsigned char kDelete = 0x7F;
  return sequence.size() == 1 ? byte(0) < ' ' || byte(0) == kDelete
                              : byte(0) == 0xC2 && byte(1) < 0xA0;
}

void AppendEscaped(std::string& text, char c) {
  constexpr std::string_view kHex = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  switch (c) {
    case '\n':
      text += "\\n";
      break;
    case '\r':
      text += "\\r";
      break;
    case '\t':
      text += "\\t";
      break;
    default:
      text += "\\x";
      text += kHex[byte >> 4U];
      text += kHex[byte & 15U];
  }
}

std::string Escape(std::string_view text, bool backslashes) {
  std::string escaped;
  escaped.reserve(text.size());
  while (!text.empty()) {
    const std::size_t valid = SequenceLength(text);
    const std::string_view sequence = text.substr(0, valid == 0 ? 1 : valid);
    if (valid == 0 || IsControl(sequence)) {
      for (const char c : sequence) {
        AppendEscaped(escaped, c);
      }
    } else if (IsDeceptive(sequence)) {
      AppendEscape(escaped, sequence);
    } else {
      escaped += backslashes && sequence == "\\" ? "\\\\" : sequence;
    }
    text.remove_prefix(sequence.size());
  }
  return escaped;
}

}  // namespace

std::string Escaped(std::string_view text) {
  return Escape(text, true);
}

std::string WithoutControls(std::string_view text) {
  return Escape(text, false);
}

bool IsDeceptive(std::string_view character) noexcept {
  // All of them are of two or three bytes.
  if (character.size() < 2 || character.size() > 3) {
    return false;
  }
  const char32_t codePoint = CodePointOf(character);
  return codePoint == 0x061C || codePoint == 0x200E || codePoint == 0x200F ||
         (codePoint >= 0x2028 && codePoint <= 0x202E) ||
         (codePoint >= 0x2066 && codePoint <= 0x2069);
}

void AppendEscape(std::string& text, std::string_view character) {
  constexpr std::string_view kHex = "0123456789abcdef";
  const char32_t codePoint = CodePointOf(character);
  text += "\\u";
  for (const unsigned shift : {12U, 8U, 4U, 0U}) {
    text += kHex[codePoint >> shift & 15U];
  }
}

bool HasControls(std::string_view text) noexcept {
  while (!text.empty()) {
    const std::size_t valid = SequenceLength(text);
    if (valid > 0 && IsControl(text.substr(0, valid))) {
      return true;
    }
    text.remove_prefix(valid == 0 ? 1 : valid);
  }
  return false;
}

}  // namespace Json::Utf8
