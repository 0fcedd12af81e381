#include "shell/shell_line.h"

#include "shell/shell_text.h"

#include <utility>

namespace tarnctl {
namespace {

constexpr std::string_view kPlain =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+./:=,@%";

}  // namespace

std::vector<std::string> SplitShellLine(std::string_view line) {
  std::vector<std::string> words;
  std::string word;
  bool isWord = false;
  ShellText text(line);
  for (auto piece = text.Next(); piece != ShellText::Piece::END; piece = text.Next()) {
    if (piece == ShellText::Piece::BLANK || piece == ShellText::Piece::LINE_END) {
      if (isWord) {
        words.push_back(std::move(word));
        word.clear();
      }
      isWord = false;
      continue;
    }
    isWord = true;
    if (piece == ShellText::Piece::CHARACTER) {
      word += text.Character();
    }
  }
  words.push_back(std::move(word));
  return words;
}

std::string QuoteForShell(std::string_view text) {
  std::string quoted;
  for (const char c : text) {
    if (kPlain.find(c) == std::string_view::npos && static_cast<unsigned char>(c) < 0x80) {
      quoted += '\\';
    }
    quoted += c;
  }
  return quoted;
}

}  // namespace tarnctl
