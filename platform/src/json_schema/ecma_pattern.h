// Patterns of ECMA 262 in PCRE2's words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace JsonValidator {

/// Number of the callout before a back reference. Others are the binary logarithm of how many
/// characters may be run over in vain before the next callout; 0 for a few.
constexpr std::uint32_t kBeforeBackReference = 255;

struct TranslatedPattern {
  std::string text;  ///< with a callout wherever matching may try once more
  std::uint64_t stepsOfACharacter = 1;
  std::vector<std::pair<std::size_t, std::size_t>> marks;  ///< offset here, byte of the pattern

  /// The byte of the pattern that an offset into the text comes from.
  std::size_t SourceOf(std::size_t offset) const;
};

/// Reads a pattern with the meaning of ECMA 262's Unicode mode: over code points, `\s` the white
/// space of ECMAScript, `\d`, `\w` and `\b` of ASCII. Of the web's older syntax it takes what
/// schemas are written with: escapes of any punctuation, and braces and "]" that stand for
/// themselves. Nothing, with the construct and its byte in `fault`, for what is no such pattern.
std::optional<TranslatedPattern> TranslatePattern(std::string_view pattern, std::string& fault);

}  // namespace JsonValidator
