// The text of a pattern as PCRE2 gets it.
#pragma once

#include "json_schema/ecma_pattern.h"
#include "json_schema/ecma_reader.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace JsonValidator::Ecma {

constexpr std::size_t kNoEnd = Reader::kMost + 1;  ///< of a quantifier without an upper limit
constexpr std::size_t kMostRounds = 65535;         ///< that PCRE2 counts
constexpr std::size_t kMostRoundsOfAtoms = 32 * kMostRounds;

/// How often something repeats.
struct Rounds {
  std::size_t least;
  std::size_t most;  ///< or kNoEnd
  bool lazy;

  bool AreMoreThan(std::size_t number) const {
    return least > number || (most != kNoEnd && most > number);
  }
};

/// Writes terms, and callouts before those that matching may come to more than once from where a
/// callout before stood.
class Writer {
 public:
  TranslatedPattern Take() { return std::move(result_); }
  std::size_t Size() const { return result_.text.size(); }

  /// What is written from here on comes from that byte of the pattern.
  void Mark(std::size_t source) { result_.marks.emplace_back(Size(), source); }
  /// Something that matches no character.
  void Add(std::string_view text) { result_.text += text; }
  /// Something that matches characters.
  void AddAtom(std::string_view text, std::size_t callout = 0);

  /// Matching may come back to what follows from several places.
  void NoteTries() { tries_ = true; }
  void ForgetTries() { tries_ = false; }
  /// A callout, if matching may come here from several places.
  void AddCallout(std::size_t number = 0);
  /// A callout whose number is not known yet.
  /// \return what FillIn takes
  std::size_t AddOpenCallout();
  void FillIn(std::size_t callout, std::size_t rounds);

  /// Repeats the atom or the group that was written last. More than kMostRounds are for atoms.
  void Repeat(const Rounds& rounds, bool atom);

  /// Counts in so many branches or members, each of which has to be tried at a character.
  void Weigh(std::size_t branches);

 private:
  TranslatedPattern result_;
  std::size_t atom_ = 0;  // where the last one begins
  std::size_t run_ = 0;   // atoms since the last callout
  bool tries_ = true;
};

}  // namespace JsonValidator::Ecma
