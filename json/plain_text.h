// The run of characters that a JSON string holds as they are.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Json {

/// Where the characters end that stand for themselves in a string: at a quote, a backslash, a control
/// character, or the end. Eight at a time, as most of a store's text is such.
inline const char* EndOfPlain(const char* at, const char* end) {
  using Word = std::uint64_t;
  constexpr Word kOnes = 0x0101010101010101U;
  constexpr Word kHighBits = 0x80 * kOnes;
  constexpr int kBitsOfByte = 8;
  if constexpr (std::endian::native == std::endian::little) {
    for (Word word = 0; end - at >= static_cast<std::ptrdiff_t>(sizeof(word)); at += sizeof(word)) {
      std::memcpy(&word, at, sizeof(word));
      // A byte's high bit is set where the byte is 0 (the first such one is exact) ...
      const auto zeroIn = [](Word bytes) { return (bytes - kOnes) & ~bytes; };
      // ... or, of the last, less than a blank.
      const Word special = (zeroIn(word ^ ('"' * kOnes)) | zeroIn(word ^ ('\\' * kOnes)) |
                            ((word - ' ' * kOnes) & ~word)) &
                           kHighBits;
      if (special != 0) {
        return at + std::countr_zero(special) / kBitsOfByte;
      }
    }
  }
  while (at != end && *at != '"' && *at != '\\' && static_cast<unsigned char>(*at) >= ' ') {
    ++at;
  }
  return at;
}

}  // namespace Json
