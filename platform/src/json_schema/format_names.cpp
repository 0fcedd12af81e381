#include "json/characters.h"
#include "json_schema/text_formats.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <idn2.h>
#include <memory>
#include <new>
#include <string>

namespace JsonValidator {
namespace {

constexpr std::size_t kLongestName = 253;
constexpr std::size_t kLongestLabel = 63;

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

/// Whether all parts between the dots fit.
template <class Fits>
bool AllParts(std::string_view text, const Fits& fits) {
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find('.', begin), text.size());
    if (!fits(text.substr(begin, end - begin))) {
      return false;
    }
    begin = end + 1;
  }
  return true;
}

bool IsLabel(std::string_view label) {
  const auto allowed = [](char c) { return Json::IsLetter(c) || Json::IsDigit(c) || c == '-'; };
  return !label.empty() && label.size() <= kLongestLabel && label.front() != '-' &&
         label.back() != '-' && std::all_of(label.begin(), label.end(), allowed);
}

/// Length of the label as the domain name system has it, or 0 for what is no label of IDNA 2008.
std::size_t LengthOfIdnLabel(std::string_view label) {
  constexpr std::string_view kAlreadyEncoded = "xn--";
  const bool ascii = std::all_of(label.begin(), label.end(), IsAscii);
  if (ascii && !label.starts_with(kAlreadyEncoded)) {
    return IsLabel(label) ? label.size() : 0;
  }
  constexpr std::size_t kMostBytes = 4;  // of a character
  if (label.size() > kLongestLabel * kMostBytes || label.find('\0') != std::string_view::npos) {
    return 0;
  }
  const std::string copy(label);
  const auto* text = reinterpret_cast<const std::uint8_t*>(copy.c_str());
  std::uint8_t* registered = nullptr;
  const int status =
      idn2_register_u8(ascii ? nullptr : text, ascii ? text : nullptr, &registered, 0);
  const std::unique_ptr<std::uint8_t, void (*)(void*)> freed(registered, idn2_free);
  if (status == IDN2_MALLOC) {
    throw std::bad_alloc();  // says nothing of the label
  }
  return status == IDN2_OK ? std::string_view(reinterpret_cast<const char*>(registered)).size() : 0;
}

bool IsAtom(std::string_view text, bool international) {
  constexpr std::string_view kOthers = "!#$%&'*+-/=?^_`{|}~";
  return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
    return IsAscii(c)
               ? Json::IsLetter(c) || Json::IsDigit(c) || kOthers.find(c) != std::string_view::npos
               : international;
  });
}

bool IsQuotedString(std::string_view text, bool international) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
    return false;
  }
  text = text.substr(1, text.size() - 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escapes = text[i] == '\\';
    i += static_cast<std::size_t>(escapes);
    if (i == text.size() || (!escapes && text[i] == '"') ||
        (IsAscii(text[i]) ? text[i] < ' ' || text[i] > '~' : !international)) {
      return false;
    }
  }
  return true;
}

bool IsAddressLiteral(std::string_view domain) {
  if (domain.size() <= 2 || domain.front() != '[' || domain.back() != ']') {
    return false;
  }
  const std::string_view address = domain.substr(1, domain.size() - 2);
  constexpr std::string_view kIpv6 = "IPv6:";
  return address.starts_with(kIpv6) ? IsIpv6(address.substr(kIpv6.size())) : IsIpv4(address);
}

bool IsAddress(std::string_view text, bool international) {
  const std::size_t at = text.rfind('@');
  if (at == std::string_view::npos) {
    return false;
  }
  const std::string_view local = text.substr(0, at);
  const std::string_view domain = text.substr(at + 1);
  if (!IsAddressLiteral(domain) && !(international ? IsIdnHostname(domain) : IsHostname(domain))) {
    return false;
  }
  return IsQuotedString(local, international) ||
         AllParts(local, [&](std::string_view part) { return IsAtom(part, international); });
}

}  // namespace

bool IsHostname(std::string_view text) {
  return text.size() <= kLongestName && AllParts(text, IsLabel);
}

bool IsIdnHostname(std::string_view text) {
  std::size_t length = 0;
  return AllParts(text, [&](std::string_view label) {
    const std::size_t own = LengthOfIdnLabel(label);
    length += own + 1;
    return own > 0 && length <= kLongestName + 1;
  });
}

bool IsEmail(std::string_view text) {
  return IsAddress(text, false);
}

bool IsIdnEmail(std::string_view text) {
  return IsAddress(text, true);
}

bool IsUuid(std::string_view text) {
  constexpr std::string_view kForm = "00000000-0000-0000-0000-000000000000";
  return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(),
                    [](char c, char form) { return form == '-' ? c == '-' : Json::IsHexDigit(c); });
}

}  // namespace JsonValidator
