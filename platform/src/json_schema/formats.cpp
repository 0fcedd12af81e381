#include "json_schema/formats.h"

#include "json_schema/ecma_pattern.h"
#include "json_schema/text_formats.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace JsonValidator {
namespace {

bool IsPattern(std::string_view text) {
  std::string fault;
  return TranslatePattern(text, fault).has_value();
}

constexpr Format kFormats[] = {
    {"date", "a date such as 2024-02-29", IsDate},
    {"time", "a time with its offset such as 23:20:50Z", IsTime},
    {"date-time", "a date and time such as 2024-02-29T23:20:50Z", IsDateTime},
    {"duration", "a duration such as P1DT12H", IsDuration},
    {"email", "an e-mail address", IsEmail},
    {"hostname", "a host name", IsHostname},
    {"idn-email", "an internationalized e-mail address", IsIdnEmail, nullptr, 500, 64},
    {"idn-hostname", "an internationalized host name", IsIdnHostname, nullptr, 500, 64},
    {"ipv4", "an IPv4 address", IsIpv4},
    {"ipv6", "an IPv6 address", IsIpv6},
    {"uri", "a URI", IsUri},
    {"uri-reference", "a URI or a relative reference", IsUriReference},
    {"iri", "an IRI", IsIri},
    {"iri-reference", "an IRI or a relative reference", IsIriReference},
    {"uri-template", "a URI template", IsUriTemplate},
    {"json-pointer", "a JSON Pointer", IsJsonPointer},
    {"relative-json-pointer", "a relative JSON Pointer", IsRelativeJsonPointer},
    {"regex", "a regular expression", IsPattern, nullptr, 100, 64},
    {"uuid", "a UUID such as 2eb8aa08-aa98-11ea-b4aa-73b441d16380", IsUuid},
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

std::string FormatNames() {
  std::string names;
  for (const Format& format : kFormats) {
    names.append(names.empty() ? "" : ", ").append(format.name);
  }
  return names;
}

}  // namespace JsonValidator
