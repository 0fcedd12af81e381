#include "completion/shell_line.h"

namespace tarnctl {
namespace {

constexpr std::string_view kPlain =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+./:=,@%";

}  // namespace

std::vector<std::string> SplitShellLine(std::string_view line) {
  std::vector<std::string> words;
  std::string word;
  bool isWord = false;
  char quote = '\0';
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quote == '\0' && (c == ' ' || c == '\t' || c == '\n')) {
      if (isWord) {
        words.push_back(std::move(word));
        word.clear();
      }
      isWord = false;
      continue;
    }
    isWord = true;
    if (c == '\\' && quote != '\'') {
      // Inside double quotes a backslash is one, unless what follows would mean something.
      const bool hasNext = i + 1 < line.size();
      if (quote == '"' && hasNext &&
          std::string_view("\"\\$`").find(line[i + 1]) == std::string_view::npos) {
        word += c;
      } else if (hasNext) {
        word += line[++i];
      }
    } else if (quote == '\0' && (c == '\'' || c == '"')) {
      quote = c;
    } else if (c == quote) {
      quote = '\0';
    } else {
      word += c;
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
