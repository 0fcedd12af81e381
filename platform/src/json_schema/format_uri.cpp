#include "json/characters.h"
#include "json/pointer.h"
#include "json/uri_resolution.h"
#include "json/utf8.h"
#include "json_schema/text_formats.h"

#include <algorithm>
#include <cstddef>

namespace JsonValidator {
namespace {

bool IsPercentEscape(std::string_view text) {
  return text.size() > 2 && text[0] == '%' && Json::IsHexDigit(text[1]) &&
         Json::IsHexDigit(text[2]);
}

enum class UriCharacters { URI, IRI, IRI_QUERY };

/// Characters beyond ASCII that the kind of text may have.
bool IsInternational(char32_t c, UriCharacters kind) {
  constexpr char32_t kPrivateUse = 0xE000;
  constexpr char32_t kPastPrivateUse = 0xF8FF;
  constexpr char32_t kPrivatePlanes = 0xF0000;
  constexpr char32_t kSpecials = 0xE0000;
  constexpr char32_t kPastSpecials = 0xE0FFF;
  if (kind == UriCharacters::URI || c < 0xA0 || (c & 0xFFFEU) == 0xFFFE) {
    return false;
  }
  if ((c >= kPrivateUse && c <= kPastPrivateUse) || c >= kPrivatePlanes) {
    return kind == UriCharacters::IRI_QUERY;
  }
  const bool noCharacter = (c >= 0xFDD0 && c <= 0xFDEF) || (c >= 0xFFF0 && c <= 0xFFFF);
  return !noCharacter && !(c >= kSpecials && c <= kPastSpecials);
}

/// Whether the text consists of unreserved characters, percent escapes and what else is allowed in
/// its place.
bool ConsistsOf(std::string_view text, std::string_view others, UriCharacters kind) {
  constexpr std::string_view kUnreservedMarks = "-._~";
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '%') {
      if (!IsPercentEscape(text.substr(i))) {
        return false;
      }
      i += 2;
    } else if (static_cast<unsigned char>(c) >= 0x80) {
      const std::string_view character = text.substr(i, Json::Utf8::SequenceLength(text.substr(i)));
      if (character.empty() || !IsInternational(Json::Utf8::CodePointOf(character), kind)) {
        return false;
      }
      i += character.size() - 1;
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
         text.find('%') == std::string_view::npos &&
         ConsistsOf(text.substr(dot + 1), kUserInfo, UriCharacters::URI);
}

bool IsAuthority(std::string_view text, UriCharacters kind) {
  const std::size_t at = text.rfind('@');
  if (at != std::string_view::npos) {
    if (!ConsistsOf(text.substr(0, at), kUserInfo, kind)) {
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
    if (!ConsistsOf(text.substr(0, colon), kSubDelimiters, kind)) {
      return false;
    }
    port = text.substr(colon);
  }
  return port.empty() ||
         (port.front() == ':' && std::all_of(port.begin() + 1, port.end(), Json::IsDigit));
}

bool IsRelativePart(std::string_view text, UriCharacters kind) {
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    const std::size_t end = std::min(text.find('/'), text.size());
    if (!IsAuthority(text.substr(0, end), kind)) {
      return false;
    }
    text.remove_prefix(end);
  }
  return ConsistsOf(text, kPath, kind);
}

bool IsReference(std::string_view text, UriCharacters kind) {
  const std::size_t scheme = Json::SchemeLength(text);
  if (scheme > 0) {
    text.remove_prefix(scheme + 1);
  } else if (text.substr(0, text.find_first_of("/?#")).find(':') != std::string_view::npos) {
    return false;  // a colon in the first segment would make a scheme of it
  }
  const std::size_t fragment = std::min(text.find('#'), text.size());
  if (fragment < text.size() && !ConsistsOf(text.substr(fragment + 1), kQuery, kind)) {
    return false;
  }
  text = text.substr(0, fragment);
  const std::size_t query = std::min(text.find('?'), text.size());
  const UriCharacters inQuery = kind == UriCharacters::IRI ? UriCharacters::IRI_QUERY : kind;
  return (query == text.size() || ConsistsOf(text.substr(query + 1), kQuery, inQuery)) &&
         IsRelativePart(text.substr(0, query), kind);
}

/// One variable of an expression: its name, and perhaps "*" or ":" and a length.
bool IsVariable(std::string_view text) {
  constexpr std::size_t kMostDigits = 4;
  const std::size_t colon = std::min(text.find(':'), text.size());
  const std::string_view length = text.substr(std::min(colon + 1, text.size()));
  if (colon < text.size() &&
      (length.empty() || length.size() > kMostDigits || length.front() == '0' ||
       !std::all_of(length.begin(), length.end(), Json::IsDigit))) {
    return false;
  }
  std::string_view name = text.substr(0, colon);
  if (colon == text.size() && name.ends_with('*')) {
    name.remove_suffix(1);
  }
  bool wasDot = true;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool escape = IsPercentEscape(name.substr(i));
    const bool dot = name[i] == '.';
    if (dot ? wasDot
            : !escape && !Json::IsLetter(name[i]) && !Json::IsDigit(name[i]) && name[i] != '_') {
      return false;
    }
    wasDot = dot;
    i += escape ? 2 : 0;
  }
  return !wasDot;
}

/// What stands between the braces of a template.
bool IsExpression(std::string_view text) {
  constexpr std::string_view kOperators = "+#./;?&=,!@|";
  if (!text.empty() && kOperators.find(text.front()) != std::string_view::npos) {
    text.remove_prefix(1);
  }
  for (std::size_t comma = text.find(','); comma != std::string_view::npos;
       comma = text.find(',')) {
    if (!IsVariable(text.substr(0, comma))) {
      return false;
    }
    text.remove_prefix(comma + 1);
  }
  return IsVariable(text);
}

}  // namespace

bool IsUriReference(std::string_view text) {
  return IsReference(text, UriCharacters::URI);
}

bool IsUri(std::string_view text) {
  return Json::SchemeLength(text) > 0 && IsUriReference(text);
}

bool IsIriReference(std::string_view text) {
  return IsReference(text, UriCharacters::IRI);
}

bool IsIri(std::string_view text) {
  return Json::SchemeLength(text) > 0 && IsIriReference(text);
}

bool IsUriTemplate(std::string_view text) {
  constexpr std::string_view kLiterals = "!#$&()*+,/:;=?@[]";
  for (;;) {
    const std::size_t brace = text.find('{');
    if (!ConsistsOf(text.substr(0, brace), kLiterals, UriCharacters::IRI_QUERY)) {
      return false;
    }
    if (brace == std::string_view::npos) {
      return true;
    }
    text.remove_prefix(brace + 1);
    const std::size_t end = text.find('}');
    if (end == std::string_view::npos || !IsExpression(text.substr(0, end))) {
      return false;
    }
    text.remove_prefix(end + 1);
  }
}

bool IsJsonPointer(std::string_view text) {
  return Json::ParsePointer(text).has_value();
}

bool IsRelativeJsonPointer(std::string_view text) {
  const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  if (digits == 0 || (digits > 1 && text.front() == '0')) {
    return false;
  }
  text.remove_prefix(digits);
  return text == "#" || IsJsonPointer(text);
}

}  // namespace JsonValidator
