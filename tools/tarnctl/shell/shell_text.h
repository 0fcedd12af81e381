// Texts as a POSIX shell takes them apart ("Shell Command Language", 2.2 Quoting, 2.3 Token Recognition).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

/// The characters of words, quotes and backslashes taken away, and what stands between words. Nothing is
/// expanded.
class ShellText {
 public:
  enum class Piece {
    CHARACTER,  ///< of a word
    QUOTE,      ///< a quote begins or ends: it makes a word, an empty one too
    BLANK,
    LINE_END,
    END,
  };

  /// \param text  outlives this
  explicit ShellText(std::string_view text) : text_(text) {}

  Piece Next();

  char Character() const { return character_; }
  /// The character means something to a shell where it stands: it would expand, redirect or end
  /// something.
  bool IsSpecial() const { return isSpecial_; }
  /// The character stands for itself: behind a backslash, or in quotes.
  bool IsQuoted() const { return isQuoted_; }
  /// The line in which the quote began that is open still; 0 where none is.
  std::size_t OpenQuote() const { return quote_ == '\0' ? 0 : quoteLine_; }
  /// The line in which the next piece begins, counted from 1.
  std::size_t Line() const { return line_; }
  /// Goes to the end of the line, whatever stands there.
  void SkipLine();

 private:
  Piece Take(char character, bool isQuoted);
  Piece AfterBackslash();

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
  std::size_t quoteLine_ = 0;
  char quote_ = '\0';
  char character_ = '\0';
  bool isSpecial_ = false;
  bool isQuoted_ = false;
};

/// One command of a script.
struct ShellCommand {
  std::size_t line = 0;  ///< in which it begins
  std::vector<std::string> words;
  std::string fault;  ///< why it cannot be read; empty where it can
};

/// The commands of a text, a line each: a quote or a backslash at its end carries a line on. Empty lines
/// and comments are none. What a shell would expand, redirect or run is a fault.
std::vector<ShellCommand> ReadShellCommands(std::string_view text);

}  // namespace tarnctl
