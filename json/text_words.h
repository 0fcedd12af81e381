// A text eight bytes at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Json {

/// All bytes of a text, eight in a word, in whatever order: for what is asked of each byte. The last ones
/// may be handed on twice, and blanks stand where a short text has no more.
template <class Look>
inline void ForEachWord(std::string_view text, const Look& look) noexcept {
  using Word = std::uint64_t;
  using Half = std::uint32_t;
  constexpr Word kBlanks = 0x2020202020202020U;
  const auto bytes = [](const char* at, auto several) {
    std::memcpy(&several, at, sizeof(several));
    return several;
  };
  const char* at = text.data();
  const char* const end = at + text.size();
  if (text.size() >= sizeof(Word)) {
    for (; end - at > static_cast<std::ptrdiff_t>(sizeof(Word)); at += sizeof(Word)) {
      look(bytes(at, Word()));
    }
    look(bytes(end - sizeof(Word), Word()));
  } else if (text.size() >= sizeof(Half)) {
    look(Word{bytes(at, Half())} << 32U | bytes(end - sizeof(Half), Half()));
  } else if (!text.empty()) {
    const auto byte = [](char character) { return Word{static_cast<unsigned char>(character)}; };
    look(kBlanks << 24U | byte(at[0]) << 16U | byte(at[text.size() / 2]) << 8U | byte(end[-1]));
  }
}

}  // namespace Json
