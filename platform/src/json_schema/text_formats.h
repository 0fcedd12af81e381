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
bool IsMacAddress(std::string_view text);  ///< six bytes, separated by ":" or by "-"
bool IsHostname(std::string_view text);    ///< RFC 1123
bool IsEmail(std::string_view text);       ///< RFC 5321 without the display name
bool IsPort(std::string_view text);
bool IsPort(const Json::Value& integer);

// Dates and times, RFC 3339.
bool IsDate(std::string_view text);
bool IsTime(std::string_view text);  ///< with its offset from UTC
bool IsDateTime(std::string_view text);

// URIs, RFC 3986, and JSON Pointers, RFC 6901.
bool IsUri(std::string_view text);           ///< with its scheme
bool IsUriReference(std::string_view text);  ///< a URI, or one relative to another
bool IsJsonPointer(std::string_view text);

}  // namespace JsonValidator
