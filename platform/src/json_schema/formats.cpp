#include "json_schema/formats.h"

#include "json_schema/pattern.h"
#include "json_schema/text_formats.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace JsonValidator {
namespace {

bool IsPattern(std::string_view text) {
  // Escapes that PCRE2 adds and ECMAScript does not have.
  constexpr std::string_view kForeign = "AZzGaeQEKRhHNX";
  for (std::size_t i = text.find('\\'); i != std::string_view::npos && i + 1 < text.size();
       i = text.find('\\', i + 2)) {
    if (kForeign.find(text[i + 1]) != std::string_view::npos) {
      return false;
    }
  }
  std::string fault;
  return Pattern::Compile(text, fault) != nullptr;
}

constexpr Format kFormats[] = {
    {"date", "a date such as 2024-02-29", IsDate},
    {"time", "a time with its offset such as 23:20:50Z", IsTime},
    {"date-time", "a date and time such as 2024-02-29T23:20:50Z", IsDateTime},
    {"email", "an e-mail address", IsEmail},
    {"hostname", "a host name", IsHostname},
    {"ipv4", "an IPv4 address", IsIpv4},
    {"ipv6", "an IPv6 address", IsIpv6},
    {"uri", "a URI", IsUri},
    {"uri-reference", "a URI or a relative reference", IsUriReference},
    {"json-pointer", "a JSON Pointer", IsJsonPointer},
    {"regex", "a regular expression", IsPattern},
    {"mac-address", "a MAC address such as 02:00:5e:10:00:01", IsMacAddress},
    {"ipv4-prefix", "an IPv4 prefix such as 10.0.0.0/8", IsIpv4Prefix},
    {"ipv6-prefix", "an IPv6 prefix such as fd00::/8", IsIpv6Prefix},
    {"port", "a port number from 1 to 65535", IsPort, IsPort},
};

}  // namespace

const Format* FindFormat(std::string_view name) {
  const auto* found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                   [&](const Format& format) { return format.name == name; });
  return found == std::end(kFormats) ? nullptr : found;
}

}  // namespace JsonValidator
