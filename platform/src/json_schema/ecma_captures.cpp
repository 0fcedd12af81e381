#include "json_schema/ecma_captures.h"

namespace JsonValidator::Ecma {

Captures::Captures(std::string_view pattern) {
  Reader reader(pattern);
  for (bool inClass = false; !reader.AtEnd();) {
    const std::size_t at = reader.At();
    const char c = reader.Peek();
    reader.Advance(c == '\\' && at + 1 < pattern.size() ? 2 : 1);
    inClass = c == '[' || (inClass && c != ']');
    if (c != '(' || inClass) {
      continue;
    }
    const bool named = reader.Peek() == '?' && reader.Peek(1) == '<' && reader.Peek(2) != '=' &&
                       reader.Peek(2) != '!';
    if (named || reader.Peek() != '?') {
      ++count_;
    }
    if (named) {
      reader.Advance(2);
      const std::string name = TakeName(reader, at);
      if (!numbers_.try_emplace(name, count_).second) {
        throw Fault{at, "two groups have the name " + name};
      }
    }
  }
}

std::string Captures::TakeName(Reader& reader, std::size_t construct) {
  std::string name;
  while (!reader.AtEnd() && reader.Peek() != '>') {
    const std::string_view character = reader.TakeCharacter();
    const char c = character.front();
    const bool fits = Json::IsLetter(c) || c == '_' || c == '$' || character.size() > 1 ||
                      (Json::IsDigit(c) && !name.empty());
    if (!fits) {
      break;
    }
    name += character;
  }
  if (name.empty() || !reader.Skip(">")) {
    throw Fault{construct, "the name of a group is expected in " + reader.From(construct)};
  }
  return name;
}

}  // namespace JsonValidator::Ecma
