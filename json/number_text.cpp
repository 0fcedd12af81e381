#include "json/number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace Json {
namespace {

template <class Number>
std::errc Read(std::string_view text, Number& number) noexcept {
  return std::from_chars(text.data(), text.data() + text.size(), number).ec;
}

// Going by where the first digit that counts is, with the exponent.
bool IsBelowOne(std::string_view text) noexcept {
  const std::size_t digits = std::min(text.find_first_of("eE"), text.size());
  const std::size_t first = text.find_first_of("123456789");
  const std::size_t point = std::min(text.find('.'), digits);
  const long place = static_cast<long>(point) - static_cast<long>(first) - (first < point ? 1 : 0);
  long exponent = 0;
  if (digits < text.size()) {
    std::string_view given = text.substr(digits + 1);
    const bool isNegative = given.front() == '-';
    given.remove_prefix(isNegative || given.front() == '+' ? 1 : 0);
    if (Read(given, exponent) != std::errc()) {
      exponent = std::numeric_limits<int>::max();
    }
    exponent = isNegative ? -exponent : exponent;
  }
  return place + exponent < 0;
}

}  // namespace

NumberText::NumberText(std::string_view text, bool isInteger) noexcept {
  if (!isInteger) {
    ReadReal(text, Kind::FLOATING);
  } else if (Read(text, signed_) != std::errc()) {
    kind_ = Kind::UNSIGNED;
    if (Read(text, unsigned_) != std::errc()) {
      ReadReal(text, Kind::LONG_INTEGER);
    }
  }
}

void NumberText::ReadReal(std::string_view text, Kind kind) noexcept {
  kind_ = kind;
  if (Read(text, real_) == std::errc::result_out_of_range) {
    real_ = text.front() == '-' ? -0.0 : 0.0;
    kind_ = IsBelowOne(text) ? kind : Kind::TOO_LARGE;
  }
}

}  // namespace Json
