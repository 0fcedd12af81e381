// Classes of ASCII characters, whatever the locale.
#pragma once

namespace Json {

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool IsHexDigit(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace Json
