#include "json/characters.h"
#include "json_schema/text_formats.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdint>

namespace JsonValidator {
namespace {

/// A decimal number without sign and leading zeros, at most `most`.
bool IsDecimal(std::string_view text, std::uint32_t least, std::uint32_t most) {
  constexpr std::size_t kMostDigits = 9;  // the number fits
  if (text.empty() || text.size() > kMostDigits || (text.size() > 1 && text.front() == '0')) {
    return false;
  }
  std::uint32_t number = 0;
  for (const char digit : text) {
    if (!Json::IsDigit(digit)) {
      return false;
    }
    number = number * 10 + static_cast<std::uint32_t>(digit - '0');
  }
  return number >= least && number <= most;
}

bool IsPrefix(std::string_view text, bool (*isAddress)(std::string_view), std::uint32_t bits) {
  const std::size_t slash = text.find('/');
  return slash != std::string_view::npos && isAddress(text.substr(0, slash)) &&
         IsDecimal(text.substr(slash + 1), 0, bits);
}

}  // namespace

bool IsIpv4(std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  for (int part = 0; part < 4; ++part) {
    if (part > 0 && (at == end || *at++ != '.')) {
      return false;
    }
    if (at == end || !Json::IsDigit(*at)) {
      return false;
    }
    int number = *at++ - '0';
    for (; at != end && Json::IsDigit(*at); ++at) {
      const bool leadingZero = number == 0;
      number = number * 10 + (*at - '0');
      if (leadingZero || number > 255) {
        return false;
      }
    }
  }
  return at == end;
}

bool IsIpv6(std::string_view text) {
  std::array<char, INET6_ADDRSTRLEN> copy{};  // zeros: the copy ends with one
  if (text.size() >= copy.size() || text.find('\0') != std::string_view::npos) {
    return false;
  }
  std::copy(text.begin(), text.end(), copy.begin());
  in6_addr address{};
  return inet_pton(AF_INET6, copy.data(), &address) == 1;
}

bool IsIpv4Prefix(std::string_view text) {
  return IsPrefix(text, IsIpv4, 32);
}

bool IsIpv6Prefix(std::string_view text) {
  return IsPrefix(text, IsIpv6, 128);
}

bool IsMacAddress(std::string_view text) {
  constexpr std::size_t kLength = 17;
  if (text.size() != kLength || (text[2] != ':' && text[2] != '-')) {
    return false;
  }
  for (std::size_t i = 0; i < kLength; ++i) {
    if (i % 3 == 2 ? text[i] != text[2] : !Json::IsHexDigit(text[i])) {
      return false;
    }
  }
  return true;
}

bool IsPort(std::string_view text) {
  return IsDecimal(text, 1, 65535);
}

bool IsPort(const Json::Value& integer) {
  constexpr double kLast = 65535;
  return integer.GetDouble() >= 1 && integer.GetDouble() <= kLast;
}

}  // namespace JsonValidator
