#include "json/exponents.h"

#include "json/characters.h"

#include <cstddef>

namespace Json {
namespace {

std::size_t EndOfString(const std::string& text, std::size_t at) {
  for (++at; at < text.size() && text[at] != '"'; ++at) {
    at += text[at] == '\\' ? 1U : 0U;
  }
  return at + 1;
}

// Returns where the number that begins here ends.
std::size_t CutExponent(std::string& text, std::size_t at, Exponents which) {
  bool isZero = true;
  for (; at < text.size() && (IsDigit(text[at]) || text[at] == '.'); ++at) {
    isZero = isZero && (text[at] == '0' || text[at] == '.');
  }
  if (at == text.size() || (text[at] != 'e' && text[at] != 'E')) {
    return at;
  }
  ++at;
  at += at < text.size() && (text[at] == '+' || text[at] == '-') ? 1U : 0U;
  for (; at < text.size() && IsDigit(text[at]); ++at) {
    if (isZero || which == Exponents::ALL) {
      text[at] = '0';
    }
  }
  return at;
}

}  // namespace

std::string WithoutExponents(std::string_view text, Exponents which) {
  std::string cut(text);
  for (std::size_t at = 0; at < cut.size();) {
    if (cut[at] == '"') {
      at = EndOfString(cut, at);
    } else if (IsDigit(cut[at])) {
      at = CutExponent(cut, at, which);
    } else {
      ++at;
    }
  }
  return cut;
}

}  // namespace Json
