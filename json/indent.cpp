#include "json/indent.h"

#include <cstddef>

namespace Json {
namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

// The place after the string that begins at `start`.
std::size_t EndOfString(std::string_view text, std::size_t start) {
  for (std::size_t end = text.find('"', start + 1); end != std::string_view::npos;
       end = text.find('"', end + 1)) {
    // A quote after an odd number of backslashes is a part of the string.
    std::size_t before = end;
    while (text[before - 1] == '\\') {
      --before;
    }
    if ((end - before) % 2 == 0) {
      return end + 1;
    }
  }
  return text.size();
}

// The place after the number or word that begins at `start`.
std::size_t EndOfUnmarked(std::string_view text, std::size_t start) {
  std::size_t end = start + 1;
  while (end < text.size() && text[end] != ',' && text[end] != '}' && text[end] != ']' &&
         !IsBlank(text[end])) {
    ++end;
  }
  return end;
}

}  // namespace

void AppendLine(unsigned level, std::string& out) {
  out += '\n';
  out.append(std::size_t{2} * level, ' ');
}

void AppendIndented(std::string_view text, unsigned level, std::string& out) {
  char open = 0;  // the bracket that nothing has followed yet
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (IsBlank(c)) {
      ++at;
      continue;
    }
    const bool closes = c == '}' || c == ']';
    if (closes) {
      --level;
    }
    if (open != 0 ? !closes : closes) {
      AppendLine(level, out);
    }
    open = 0;
    switch (c) {
      case '{':
      case '[':
        open = c;
        ++level;
        out += c;
        ++at;
        break;
      case ',':
        out += c;
        AppendLine(level, out);
        ++at;
        break;
      case ':':
        out += ": ";
        ++at;
        break;
      case '}':
      case ']':
        out += c;
        ++at;
        break;
      default: {
        const std::size_t end = c == '"' ? EndOfString(text, at) : EndOfUnmarked(text, at);
        out.append(text, at, end - at);
        at = end;
      }
    }
  }
}

}  // namespace Json
