#include "yaml/core_scalars.h"

#include "json/characters.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <initializer_list>
#include <system_error>

namespace tarnctl {
namespace {

using Kind = CoreScalar::Kind;

bool IsAnyOf(std::string_view text, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

// Takes the digits at the start away.
std::string_view TakeDigits(std::string_view& text) {
  const auto* const end = std::find_if_not(text.begin(), text.end(), Json::IsDigit);
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  return digits;
}

bool TakeSign(std::string_view& text, std::string& into) {
  const bool isSigned = !text.empty() && (text.front() == '-' || text.front() == '+');
  if (isSigned) {
    into.append(text.front() == '-' ? "-" : "");
    text.remove_prefix(1);
  }
  return isSigned;
}

std::string_view WithoutLeadingZeros(std::string_view digits) {
  const std::size_t first = digits.find_first_not_of('0');
  return first == std::string_view::npos ? digits.substr(0, 1) : digits.substr(first);
}

// The number as JSON writes it; empty for what is none.
std::string ReadDecimal(std::string_view text) {
  std::string number;
  TakeSign(text, number);
  const std::string_view whole = TakeDigits(text);
  number.append(whole.empty() ? "0" : WithoutLeadingZeros(whole));
  std::string_view fraction;
  if (!text.empty() && text.front() == '.') {
    text.remove_prefix(1);
    fraction = TakeDigits(text);
    number.append(1, '.').append(fraction.empty() ? "0" : fraction);
  }
  if (whole.empty() && fraction.empty()) {
    return {};
  }
  if (!text.empty() && (text.front() == 'e' || text.front() == 'E')) {
    text.remove_prefix(1);
    number.append(1, 'e');
    TakeSign(text, number);
    const std::string_view exponent = TakeDigits(text);
    if (exponent.empty()) {
      return {};
    }
    number.append(exponent);
  }
  return text.empty() ? number : std::string();
}

CoreScalar ReadWithBase(std::string_view digits, int base) {
  std::uint64_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, value, base);
  if (read.ptr != end || digits.empty()) {
    return {};
  }
  return read.ec == std::errc() ? CoreScalar{Kind::NUMBER, std::to_string(value)}
                                : CoreScalar{Kind::LONG_INTEGER};
}

// Letters that case does not tell apart.
std::string Lowered(std::string_view text) {
  std::string lowered(text);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lowered;
}

}  // namespace

CoreScalar ReadCoreScalar(std::string_view text) {
  if (IsAnyOf(text, {"", "~", "null", "Null", "NULL"})) {
    return {Kind::NULL_VALUE};
  }
  if (IsAnyOf(text, {"true", "True", "TRUE"})) {
    return {Kind::TRUE_VALUE};
  }
  if (IsAnyOf(text, {"false", "False", "FALSE"})) {
    return {Kind::FALSE_VALUE};
  }
  if (text.starts_with("0x")) {
    return ReadWithBase(text.substr(2), 16);
  }
  if (text.starts_with("0o")) {
    return ReadWithBase(text.substr(2), 8);
  }
  if (std::string number = ReadDecimal(text); !number.empty()) {
    return {Kind::NUMBER, std::move(number)};
  }
  std::string sign;
  std::string_view rest = text;
  TakeSign(rest, sign);
  const bool isFinite =
      !IsAnyOf(rest, {".inf", ".Inf", ".INF"}) && !IsAnyOf(text, {".nan", ".NaN", ".NAN"});
  return {isFinite ? Kind::TEXT : Kind::NOT_FINITE};
}

bool IsPlainEverywhere(std::string_view text) {
  // What begins with a letter is no number, date or time in any of them.
  if (text.empty() || !Json::IsLetter(text.front()) || text.back() == ' ' ||
      text.find("  ") != std::string_view::npos) {
    return false;
  }
  const bool isHarmless = std::all_of(text.begin(), text.end(), [](char c) {
    return Json::IsLetter(c) || Json::IsDigit(c) || c == ' ' || c == '_' || c == '-' || c == '.' ||
           c == '/';
  });
  return isHarmless && !IsAnyOf(Lowered(text), {"y", "n", "yes", "no", "on", "off", "true", "false",
                                                "null", "nil", "none", "inf", "infinity", "nan"});
}

}  // namespace tarnctl
