// Patterns of schemas (ECMAScript regular expressions), on PCRE2 with its limits set.
#pragma once

#include <memory>
#include <string>
#include <string_view>

struct pcre2_real_code_8;

namespace JsonValidator {

/// A compiled pattern. Safe from several threads. Matching is bounded in time and memory whatever
/// the pattern and the text.
class Pattern {
 public:
  enum class Result { MATCH, NO_MATCH, UNDECIDED };  ///< UNDECIDED: the limits were reached

  /// An empty pointer, with what is wrong in `fault`, for what is no pattern.
  static std::unique_ptr<const Pattern> Compile(std::string_view text, std::string& fault);

  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;
  ~Pattern();

  /// Looks for the pattern anywhere in a text, which has to be valid UTF-8.
  Result Match(std::string_view text) const;

  const std::string& Text() const { return text_; }

 private:
  Pattern(std::string_view text, pcre2_real_code_8* code) : text_(text), code_(code) {}

  std::string text_;
  pcre2_real_code_8* code_;
};

}  // namespace JsonValidator
