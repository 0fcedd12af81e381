#include "json/indent.h"

#include <cstddef>

namespace Json {
namespace {

// The place after the string that begins at `start`.
std::size_t EndOfString(std::string_view text, std::size_t start) {
  std::size_t at = text.find_first_of("\"\\", start + 1);
  while (at < text.size() && text[at] == '\\') {
    at = text.find_first_of("\"\\", at + 2);
  }
  return at < text.size() ? at + 1 : text.size();
}

bool IsBlank(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
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
      case '"': {
        const std::size_t end = EndOfString(text, at);
        out.append(text, at, end - at);
        at = end;
        break;
      }
      default:  // a closing bracket, or a part of a number or a word
        out += c;
        ++at;
    }
  }
}

}  // namespace Json
