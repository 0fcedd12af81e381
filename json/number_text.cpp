#include "json/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>

namespace Json {

NumberText::NumberText(const char* begin, const char* end) {
  const char* first = end;
  while (first != begin && first[-1] != '\0' && std::strchr("0123456789.eE+-", first[-1])) {
    --first;
  }
  text_ = {first, static_cast<std::size_t>(end - first)};
}

bool NumberText::Read(double& value) const {
  const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
  if (error == std::errc::result_out_of_range) {
    value = text_.front() == '-' ? -0.0 : 0.0;
    return IsBelowOne();
  }
  return true;
}

bool NumberText::IsDoubtful(double value) {
  constexpr double kTiny = 1e-200;
  return !std::isfinite(value) || (value != 0 && std::abs(value) < kTiny);
}

bool NumberText::HasLong(std::string_view text) {
  constexpr std::size_t kLong = 100;
  const auto isDigit = [](char character) {
    return (character >= '0' && character <= '9') || character == '.';
  };
  for (std::size_t probe = kLong / 2; probe < text.size(); probe += kLong / 2) {
    std::size_t begin = probe;
    while (begin > 0 && isDigit(text[begin])) {
      --begin;
    }
    std::size_t end = probe;
    while (end < text.size() && isDigit(text[end])) {
      ++end;
    }
    if (end - begin >= kLong) {
      return true;
    }
  }
  return false;
}

// Where the first digit that counts is, with the exponent.
bool NumberText::IsBelowOne() const {
  const std::size_t digits = std::min(text_.find_first_of("eE"), text_.size());
  const std::size_t first = text_.find_first_of("123456789");
  const std::size_t point = std::min(text_.find('.'), digits);
  const long place = static_cast<long>(point) - static_cast<long>(first) - (first < point ? 1 : 0);
  long exponent = 0;
  if (digits < text_.size()) {
    const bool isNegative = text_[digits + 1] == '-';
    const char* begin = text_.data() + digits + 1;
    begin += *begin == '-' || *begin == '+' ? 1 : 0;
    if (std::from_chars(begin, text_.data() + text_.size(), exponent).ec != std::errc()) {
      exponent = std::numeric_limits<int>::max();
    }
    exponent = isNegative ? -exponent : exponent;
  }
  return place + exponent < 0;
}

}  // namespace Json
