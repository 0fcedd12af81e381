// The texts that formats ask for.
#pragma once

#include "json/json.h"

#include <string_view>

namespace JsonValidator {

// Names and addresses on networks.
bool IsIpv4(std::string_view text);
bool IsIpv6(std::string_view text);
bool IsIpv4Prefix(std::string_view text);  ///< address/length
bool IsIpv6Prefix(std::string_view text);
bool IsMacAddress(std::string_view text);   ///< six bytes, separated by ":" or by "-"
bool IsHostname(std::string_view text);     ///< RFC 1123
bool IsIdnHostname(std::string_view text);  ///< RFC 5890, each label fit to be registered
bool IsEmail(std::string_view text);        ///< RFC 5321 without the display name
bool IsIdnEmail(std::string_view text);     ///< RFC 6531
bool IsPort(std::string_view text);
bool IsPort(const Json::Value& integer);

bool IsUuid(std::string_view text);  ///< RFC 4122

// Dates and times, RFC 3339.
bool IsDate(std::string_view text);
bool IsTime(std::string_view text);  ///< with its offset from UTC
bool IsDateTime(std::string_view text);
bool IsDuration(std::string_view text);  ///< of its appendix A

// URIs, RFC 3986, IRIs, RFC 3987, templates of them, RFC 6570, and JSON Pointers, RFC 6901. Texts
// are UTF-8.
bool IsUri(std::string_view text);           ///< with its scheme
bool IsUriReference(std::string_view text);  ///< a URI, or one relative to another
bool IsIri(std::string_view text);           ///< with its scheme
bool IsIriReference(std::string_view text);  ///< an IRI, or one relative to another
bool IsUriTemplate(std::string_view text);
bool IsJsonPointer(std::string_view text);
bool IsRelativeJsonPointer(std::string_view text);  ///< levels to go up, then a pointer or "#"

}  // namespace JsonValidator
