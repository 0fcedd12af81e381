// UTF-8 as checks and printing need it.
#pragma once

#include "json/text_words.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Json::Utf8 {

/// Asked of every text and name.
inline bool IsAscii(std::string_view text) noexcept {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::uint64_t bits = 0;
  ForEachWord(text, [&bits](std::uint64_t word) { bits |= word; });
  return (bits & kHighBits) == 0;
}

/// The same as IsValid, for a text that is hardly ASCII.
bool IsValidBeyondAscii(std::string_view text) noexcept;

/// No overlong forms, no surrogates, nothing past U+10FFFF.
inline bool IsValid(std::string_view text) noexcept {
  return IsAscii(text) || IsValidBeyondAscii(text);
}

/// Characters (code points) of a valid text.
std::size_t CountCharacters(std::string_view text) noexcept;

/// The text with every byte that is not UTF-8 replaced by U+FFFD.
std::string Repaired(std::string_view text);

/// The text as it may be shown in a line: control characters and bytes that are not UTF-8 escaped
/// as "\\xNN", line ends and tabs as "\\n", "\\r" and "\\t", what IsDeceptive names as "\\uNNNN", a
/// backslash doubled.
std::string Escaped(std::string_view text);

/// The same for a text that may hold escaped ones already, as messages do: backslashes stay.
std::string WithoutControls(std::string_view text);

/// True for a text with a control character (C0, DEL, or C1 of Unicode).
bool HasControls(std::string_view text) noexcept;

/// True for a character, a valid sequence, that lets a line look like another one: those that reorder
/// what stands around them (UAX #9), and the line ends of Unicode.
bool IsDeceptive(std::string_view character) noexcept;

/// Appends the escape "\\uNNNN" of a character, which is a valid sequence of at most three bytes.
void AppendEscape(std::string& text, std::string_view character);

/// Length of the valid sequence that the text starts with; 0 when it starts with none.
std::size_t SequenceLength(std::string_view text) noexcept;

/// The beginning of a text that fits into so many bytes, no character cut in two.
std::string_view Fitting(std::string_view text, std::size_t most) noexcept;

/// The code point of one character, which is a valid sequence and all of the text.
char32_t CodePointOf(std::string_view character) noexcept;

}  // namespace Json::Utf8
