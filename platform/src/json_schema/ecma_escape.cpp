#include "json_schema/ecma_escape.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

namespace JsonValidator::Ecma {
namespace {

constexpr std::string_view kSpace =
    "\\s\\x{a0}\\x{1680}\\x{2000}-\\x{200a}\\x{2028}\\x{2029}\\x{202f}\\x{205f}\\x{3000}\\x{feff}";
constexpr std::string_view kNoSpace =
    "\\x{0}-\\x{8}\\x{e}-\\x{1f}\\x{21}-\\x{9f}\\x{a1}-\\x{167f}\\x{1681}-\\x{1fff}"
    "\\x{200b}-\\x{2027}\\x{202a}-\\x{202e}\\x{2030}-\\x{205e}\\x{2060}-\\x{2fff}"
    "\\x{3001}-\\x{d7ff}\\x{e000}-\\x{fefe}\\x{ff00}-\\x{10ffff}";

constexpr char32_t kLastCharacter = 0x10FFFF;

[[noreturn]] void RaiseForeign(const Reader& reader, std::size_t begin) {
  throw Fault{begin, "ECMAScript has no escape " + reader.From(begin)};
}

/// Hexadecimal digits at hand, as many as wanted, or nothing.
std::optional<char32_t> TakeHex(Reader& reader, std::size_t digits) {
  std::uint32_t number = 0;
  std::string text;
  for (std::size_t i = 0; i < digits; ++i) {
    text += reader.Peek(i);
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + digits, number, 16);
  if (error != std::errc() || end != text.data() + digits) {
    return std::nullopt;
  }
  reader.Advance(digits);
  return static_cast<char32_t>(number);
}

/// What follows a "\u".
std::optional<char32_t> TakeUnicode(Reader& reader) {
  if (reader.Skip("{")) {
    char32_t number = 0;
    bool any = false;
    for (std::optional<char32_t> digit; number <= kLastCharacter && (digit = TakeHex(reader, 1));) {
      number = number * 16 + *digit;
      any = true;
    }
    return any && number <= kLastCharacter && reader.Skip("}") ? std::optional(number)
                                                               : std::nullopt;
  }
  const std::optional<char32_t> high = TakeHex(reader, 4);
  if (!high || *high < 0xD800 || *high > 0xDBFF) {
    return high;
  }
  Reader ahead = reader;
  const std::optional<char32_t> low = ahead.Skip("\\u") ? TakeHex(ahead, 4) : std::nullopt;
  if (!low || *low < 0xDC00 || *low > 0xDFFF) {
    return high;
  }
  reader = ahead;
  return 0x10000 + ((*high - 0xD800) << 10U) + (*low - 0xDC00);
}

std::string ReadProperty(Reader& reader, std::size_t begin, char letter) {
  std::string written;
  if (reader.Skip("{")) {
    while (!reader.AtEnd() && reader.Peek() != '}') {
      written += reader.TakeCharacter();
    }
  }
  const bool closed = reader.Skip("}");
  const std::optional<std::string> property = closed ? PropertyOf(written) : std::nullopt;
  if (!property) {
    RaiseForeign(reader, begin);
  }
  return std::string("\\") + letter + "{" + *property + "}";
}

}  // namespace

std::string Written(char32_t character) {
  std::array<char, 8> digits{};
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), std::uint32_t{character}, 16).ptr;
  return "\\x{" + std::string(digits.data(), end) + "}";
}

Characters ReadCharacters(Reader& reader) {
  const std::size_t begin = reader.At();
  if (!reader.Skip("\\")) {
    return {Json::Utf8::CodePointOf(reader.TakeCharacter()), {}};
  }
  if (reader.AtEnd()) {
    throw Fault{begin, "\\ at end of pattern"};
  }
  constexpr std::pair<char, char32_t> kControls[] = {
      {'t', 0x09}, {'n', 0x0A}, {'v', 0x0B}, {'f', 0x0C}, {'r', 0x0D}};
  const std::string_view character = reader.TakeCharacter();
  const char c = character.front();
  for (const auto& [letter, control] : kControls) {
    if (c == letter) {
      return {control, {}};
    }
  }
  std::optional<char32_t> one;
  switch (c) {
    case 'd':
    case 'D':
    case 'w':
    case 'W':
      return {0, std::string("\\") + c};
    case 's':
      return {0, std::string(kSpace)};
    case 'S':
      return {0, std::string(kNoSpace)};
    case 'p':
    case 'P':
      return {0, ReadProperty(reader, begin, c)};
    case 'c':
      if (Json::IsLetter(reader.Peek())) {
        one = Json::Utf8::CodePointOf(reader.TakeCharacter()) % 32;
      }
      break;
    case '0':
      if (!Json::IsDigit(reader.Peek())) {
        one = 0;
      }
      break;
    case 'x':
      one = TakeHex(reader, 2);
      break;
    case 'u':
      one = TakeUnicode(reader);
      break;
    default:
      if (!Json::IsLetter(c) && !Json::IsDigit(c)) {
        one = Json::Utf8::CodePointOf(character);
      }
  }
  if (!one) {
    RaiseForeign(reader, begin);
  }
  return {*one, {}};
}

}  // namespace JsonValidator::Ecma
