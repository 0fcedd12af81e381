#include "json_schema/number.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace JsonValidator {
namespace {

__extension__ using Wide = unsigned __int128;

/// digits * 10^exponent, without the sign.
struct Decimal {
  std::uint64_t digits = 0;
  int exponent = 0;
};

Decimal DecimalOf(const Json::Value& number) {
  if (number.IsUint64()) {
    return {number.GetUint64(), 0};
  }
  if (number.IsInt64()) {
    return {0 - static_cast<std::uint64_t>(number.GetInt64()), 0};
  }
  // The shortest text that reads back as this double: at most 17 digits.
  char text[32];
  const std::to_chars_result end = std::to_chars(
      text, text + sizeof(text), std::abs(number.GetDouble()), std::chars_format::scientific);
  const std::string_view written(text, static_cast<std::size_t>(end.ptr - text));
  const std::size_t mark = written.find('e');
  Decimal decimal;
  bool fraction = false;
  for (const char c : written.substr(0, mark)) {
    if (c == '.') {
      fraction = true;
      continue;
    }
    decimal.digits = decimal.digits * 10 + static_cast<std::uint64_t>(c - '0');
    decimal.exponent -= static_cast<int>(fraction);
  }
  const char* exponent = written.data() + mark + 1;
  int shift = 0;
  std::from_chars(exponent + static_cast<int>(*exponent == '+'), end.ptr, shift);
  decimal.exponent += shift;
  return decimal;
}

std::uint64_t PowerOfTenModulo(int exponent, std::uint64_t modulus) {
  Wide power = 1 % modulus;
  Wide base = 10 % modulus;
  for (int rest = exponent; rest > 0; rest /= 2) {
    if (rest % 2 != 0) {
      power = power * base % modulus;
    }
    base = base * base % modulus;
  }
  return static_cast<std::uint64_t>(power);
}

}  // namespace

bool IsMultipleOf(const Json::Value& number, const Json::Value& divisor) {
  if (number.IsUint64() && divisor.IsUint64()) {
    return number.GetUint64() % divisor.GetUint64() == 0;
  }
  const Decimal a = DecimalOf(number);
  const Decimal b = DecimalOf(divisor);
  if (a.digits == 0) {
    return true;
  }
  const int shift = a.exponent - b.exponent;
  if (shift >= 0) {
    const Wide rest = static_cast<Wide>(a.digits % b.digits) * PowerOfTenModulo(shift, b.digits);
    return rest % b.digits == 0;
  }
  constexpr int kMostDigits = 20;  // no 64-bit integer is divisible by more powers of ten
  if (shift < -kMostDigits) {
    return false;
  }
  Wide scaled = b.digits;
  for (int i = shift; i < 0; ++i) {
    scaled *= 10;
    if (scaled > a.digits) {
      return false;
    }
  }
  return a.digits % static_cast<std::uint64_t>(scaled) == 0;
}

}  // namespace JsonValidator
