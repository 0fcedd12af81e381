#include "json/characters.h"
#include "json/pointer.h"
#include "json/uri_resolution.h"
#include "json_schema/text_formats.h"

#include <algorithm>
#include <cstddef>

namespace JsonValidator {
namespace {

/// Whether the text consists of unreserved characters, percent escapes and what else is allowed in
/// its place.
bool ConsistsOf(std::string_view text, std::string_view others) {
  constexpr std::string_view kUnreservedMarks = "-._~";
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '%') {
      if (i + 2 >= text.size() || !Json::IsHexDigit(text[i + 1]) ||
          !Json::IsHexDigit(text[i + 2])) {
        return false;
      }
      i += 2;
    } else if (!Json::IsLetter(c) && !Json::IsDigit(c) &&
               kUnreservedMarks.find(c) == std::string_view::npos &&
               others.find(c) == std::string_view::npos) {
      return false;
    }
  }
  return true;
}

constexpr std::string_view kSubDelimiters = "!$&'()*+,;=";
constexpr std::string_view kUserInfo = "!$&'()*+,;=:";
constexpr std::string_view kPath = "!$&'()*+,;=:@/";
constexpr std::string_view kQuery = "!$&'()*+,;=:@/?";

bool IsIpLiteral(std::string_view text) {  // without the brackets
  if (!text.starts_with('v') && !text.starts_with('V')) {
    return IsIpv6(text);
  }
  const std::size_t dot = text.find('.');
  return dot != std::string_view::npos && dot > 1 && dot + 1 < text.size() &&
         std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(dot),
                     Json::IsHexDigit) &&
         text.find('%') == std::string_view::npos && ConsistsOf(text.substr(dot + 1), kUserInfo);
}

bool IsAuthority(std::string_view text) {
  const std::size_t at = text.rfind('@');
  if (at != std::string_view::npos) {
    if (!ConsistsOf(text.substr(0, at), kUserInfo)) {
      return false;
    }
    text.remove_prefix(at + 1);
  }
  std::string_view port;
  if (text.starts_with('[')) {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos || !IsIpLiteral(text.substr(1, end - 1))) {
      return false;
    }
    port = text.substr(end + 1);
  } else {
    const std::size_t colon = std::min(text.find(':'), text.size());
    if (!ConsistsOf(text.substr(0, colon), kSubDelimiters)) {
      return false;
    }
    port = text.substr(colon);
  }
  return port.empty() ||
         (port.front() == ':' && std::all_of(port.begin() + 1, port.end(), Json::IsDigit));
}

bool IsRelativePart(std::string_view text) {
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    const std::size_t end = std::min(text.find('/'), text.size());
    if (!IsAuthority(text.substr(0, end))) {
      return false;
    }
    text.remove_prefix(end);
  }
  return ConsistsOf(text, kPath);
}

}  // namespace

bool IsUriReference(std::string_view text) {
  const std::size_t scheme = Json::SchemeLength(text);
  if (scheme > 0) {
    text.remove_prefix(scheme + 1);
  } else if (text.substr(0, text.find_first_of("/?#")).find(':') != std::string_view::npos) {
    return false;  // a colon in the first segment would make a scheme of it
  }
  const std::size_t fragment = std::min(text.find('#'), text.size());
  if (fragment < text.size() && !ConsistsOf(text.substr(fragment + 1), kQuery)) {
    return false;
  }
  text = text.substr(0, fragment);
  const std::size_t query = std::min(text.find('?'), text.size());
  return (query == text.size() || ConsistsOf(text.substr(query + 1), kQuery)) &&
         IsRelativePart(text.substr(0, query));
}

bool IsUri(std::string_view text) {
  return Json::SchemeLength(text) > 0 && IsUriReference(text);
}

bool IsJsonPointer(std::string_view text) {
  return Json::ParsePointer(text).has_value();
}

}  // namespace JsonValidator
