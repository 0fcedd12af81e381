#include "shell/shell_text.h"

#include <algorithm>
#include <utility>

namespace tarnctl {

ShellText::Piece ShellText::Next() {
  while (at_ < text_.size()) {
    const std::string_view rest = text_.substr(at_);
    // A line that is carried on.
    if (quote_ != '\'' && rest.starts_with("\\\n")) {
      at_ += 2;
      ++line_;
      continue;
    }
    const char c = rest.front();
    if (quote_ == '\0' && rest.starts_with("\r\n")) {
      ++at_;
      continue;
    }
    ++at_;
    if (c == '\\' && quote_ != '\'') {
      return AfterBackslash();
    }
    if (quote_ != '\0' && c == quote_) {
      quote_ = '\0';
      return Piece::QUOTE;
    }
    if (quote_ != '\0') {
      return Take(c, true);
    }
    if (c == '\'' || c == '"') {
      quote_ = c;
      quoteLine_ = line_;
      return Piece::QUOTE;
    }
    if (c == '\n') {
      ++line_;
      return Piece::LINE_END;
    }
    return c == ' ' || c == '\t' ? Piece::BLANK : Take(c, false);
  }
  return Piece::END;
}

ShellText::Piece ShellText::Take(char character, bool isQuoted) {
  character_ = character;
  isQuoted_ = isQuoted;
  line_ += character == '\n' ? 1 : 0;
  const std::string_view special = quote_ == '"' ? "$`" : quote_ == '\0' ? "$`;&|<>()" : "";
  isSpecial_ = special.find(character) != std::string_view::npos;
  return Piece::CHARACTER;
}

ShellText::Piece ShellText::AfterBackslash() {
  if (at_ == text_.size()) {
    return Piece::QUOTE;
  }
  // Inside double quotes a backslash is one, unless what follows would mean something.
  const bool standsForItself =
      quote_ == '"' && std::string_view("\"\\$`").find(text_[at_]) == std::string_view::npos;
  Take(standsForItself ? '\\' : text_[at_++], true);
  isSpecial_ = false;
  return Piece::CHARACTER;
}

void ShellText::SkipLine() {
  quote_ = '\0';
  at_ = std::min(text_.find('\n', at_), text_.size());
}

std::vector<ShellCommand> ReadShellCommands(std::string_view text) {
  using Piece = ShellText::Piece;
  std::vector<ShellCommand> commands;
  ShellCommand command;
  std::string word;
  bool isWord = false;
  ShellText pieces(text);
  const auto endWord = [&] {
    if (isWord) {
      command.words.push_back(std::exchange(word, {}));
    }
    isWord = false;
  };
  const auto endCommand = [&] {
    endWord();
    if (!command.words.empty() || !command.fault.empty()) {
      commands.push_back(std::exchange(command, {}));
    }
    command = {};
  };
  const auto refuse = [&](const std::string& fault) {
    command.fault = fault;
    pieces.SkipLine();
  };
  for (auto piece = pieces.Next(); piece != Piece::END; piece = pieces.Next()) {
    if (piece == Piece::LINE_END) {
      endCommand();
      continue;
    }
    if (piece == Piece::BLANK) {
      endWord();
      continue;
    }
    if (command.line == 0) {
      command.line = pieces.Line();
    }
    if (piece == Piece::QUOTE) {
      isWord = true;
    } else if (pieces.Character() == '#' && !pieces.IsQuoted() && !isWord) {
      pieces.SkipLine();
    } else if (pieces.IsSpecial()) {
      refuse(std::string("\"") + pieces.Character() +
             "\" means something to a shell: put it in single quotes");
    } else if (pieces.Character() == '\0') {
      refuse("there is a NUL character, which no argument can hold");
    } else {
      isWord = true;
      word += pieces.Character();
    }
  }
  if (pieces.OpenQuote() != 0) {
    command.fault = "the quote of line " + std::to_string(pieces.OpenQuote()) + " has no end";
  }
  endCommand();
  return commands;
}

}  // namespace tarnctl
