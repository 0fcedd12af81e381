#include "json_schema/ecma_escape.h"

namespace JsonValidator::Ecma {
namespace {

Characters ReadMember(Reader& reader) {
  return reader.Skip("\\b") ? Characters{0x08, {}} : ReadCharacters(reader);
}

/// Without the surrogates, which are in no text and which PCRE2 does not take.
std::string Range(char32_t first, char32_t last) {
  constexpr char32_t kBefore = 0xD7FF;
  constexpr char32_t kBehind = 0xE000;
  if (IsSurrogate(first)) {
    first = kBehind;
  }
  if (IsSurrogate(last)) {
    last = kBefore;
  }
  if (first > last) {
    return {};
  }
  return first == last ? Written(first) : Written(first) + "-" + Written(last);
}

std::string MemberText(const Characters& member) {
  return member.set.empty() ? Range(member.one, member.one) : member.set;
}

}  // namespace

std::string ReadClass(Reader& reader, std::size_t& members) {
  const std::size_t begin = reader.At() - 1;
  std::string text = reader.Skip("^") ? "[^" : "[";
  for (; !reader.Skip("]"); ++members) {
    if (reader.AtEnd()) {
      throw Fault{begin, "missing terminating ] for character class"};
    }
    const std::size_t at = reader.At();
    const Characters first = ReadMember(reader);
    if (reader.Peek() != '-' || reader.Peek(1) == ']' || reader.Peek(1) == '\0') {
      text += MemberText(first);
      continue;
    }
    reader.Advance(1);
    const Characters last = ReadMember(reader);
    if (!first.set.empty() || !last.set.empty()) {
      // No range: all three stand for themselves.
      text += MemberText(first) + "\\-" + MemberText(last);
    } else if (first.one > last.one) {
      throw Fault{at, "range out of order in character class: " + reader.From(at)};
    } else {
      text += Range(first.one, last.one);
    }
  }
  return text + "]";
}

}  // namespace JsonValidator::Ecma
