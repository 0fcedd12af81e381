#include "codegen/cpp_text.h"

#include "json/utf8.h"

#include <array>
#include <cstddef>

namespace tarnctl {
namespace {

constexpr std::size_t kCommentWidth = 92;

// As ASCII has them, whatever the locale.
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsLower(char c) {
  return c >= 'a' && c <= 'z';
}
bool IsNameCharacter(char c) {
  return IsDigit(c) || IsLower(c) || (c >= 'A' && c <= 'Z');
}

// Never the same for two texts, nor for one and a name in capitals; without "__", which is reserved.
std::string SpelledName(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string name = "x";
  for (const char c : text) {
    if (IsNameCharacter(c)) {
      name += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      name += '_';
      name += kDigits[byte >> 4U];
      name += kDigits[byte & 15U];
    }
  }
  return name;
}

// A backslash, or the trigraph that stands for one, would take the next line into the comment.
std::string Closed(std::string line) {
  if (line.ends_with('\\') || line.ends_with("?\?/")) {
    line += '.';
  }
  return line;
}

}  // namespace

std::string CapitalName(std::string_view text) {
  std::string name;
  bool begins = true;
  for (const char c : text) {
    if (IsNameCharacter(c)) {
      name += begins && IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
    }
    begins = !IsNameCharacter(c);
  }
  return name;
}

std::map<std::string, std::string, std::less<>> DistinctNames(const std::set<std::string>& texts) {
  std::map<std::string, std::size_t> counts;
  for (const std::string& text : texts) {
    ++counts[CapitalName(text)];
  }
  std::map<std::string, std::string, std::less<>> names;
  for (const std::string& text : texts) {
    std::string name = CapitalName(text);
    names[text] = name.empty() || counts[name] > 1 ? SpelledName(text) : std::move(name);
  }
  return names;
}

std::string CppLiteral(std::string_view text) {
  std::string literal = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\' || c == '?') {  // "??=" and the like are trigraphs
      literal += '\\';
      literal += c;
    } else if (byte >= 0x20U && byte < 0x7fU) {
      literal += c;
    } else {
      // Three digits always: no digit of the text can join them.
      literal += '\\';
      literal += static_cast<char>('0' + (byte >> 6U));
      literal += static_cast<char>('0' + ((byte >> 3U) & 7U));
      literal += static_cast<char>('0' + (byte & 7U));
    }
  }
  literal += '"';
  return literal;
}

std::vector<std::string> CommentLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    const std::string shown = Json::Utf8::WithoutControls(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    std::string line;
    std::string word;
    const auto endWord = [&] {
      if (!line.empty() && line.size() + 1 + word.size() > kCommentWidth) {
        lines.push_back(Closed(std::move(line)));
        line.clear();
      }
      line += line.empty() || word.empty() ? "" : " ";
      line += word;
      word.clear();
    };
    for (const char c : shown) {
      if (c == ' ') {
        endWord();
      } else {
        word += std::string_view("\\@<>&#%").find(c) == std::string_view::npos ? "" : "\\";
        word += c;
      }
    }
    endWord();
    if (!line.empty()) {
      lines.push_back(Closed(std::move(line)));
    }
  }
  return lines;
}

}  // namespace tarnctl
