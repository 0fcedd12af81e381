// Patterns of schemas (ECMAScript regular expressions), on PCRE2.
#pragma once

#include "json_schema/budget.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct pcre2_real_code_8;

namespace JsonValidator {

/// A compiled pattern. Safe from several threads. Matching is bounded in work and memory whatever
/// the pattern and the text.
class Pattern {
 public:
  /// UNDECIDED: the budget is spent, or the memory that matching may take.
  enum class Result { MATCH, NO_MATCH, UNDECIDED };

  /// An empty pointer, with what is wrong in `fault`, for what is no pattern of ECMA 262 and for
  /// what PCRE2 has no like of.
  static std::unique_ptr<const Pattern> Compile(std::string_view text, std::string& fault);

  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;
  ~Pattern();

  /// Looks for the pattern anywhere in a text, which has to be valid UTF-8.
  Result Match(std::string_view text, Budget& budget) const;

  const std::string& Text() const { return text_; }

 private:
  Pattern(std::string_view text, pcre2_real_code_8* code, std::uint64_t stepsOfACharacter)
      : text_(text), code_(code), stepsOfACharacter_(stepsOfACharacter) {}

  std::string text_;
  pcre2_real_code_8* code_;
  std::uint64_t stepsOfACharacter_;
};

}  // namespace JsonValidator
