// Names and addresses on networks.
#pragma once

#include "json/json.h"

#include <string_view>

namespace JsonValidator {

bool IsIpv4(std::string_view text);
bool IsIpv6(std::string_view text);
bool IsIpv4Prefix(std::string_view text);  ///< address/length
bool IsIpv6Prefix(std::string_view text);
bool IsMacAddress(std::string_view text);  ///< six bytes, separated by ":" or by "-"
bool IsHostname(std::string_view text);    ///< RFC 1123
bool IsEmail(std::string_view text);       ///< RFC 5321 without the display name
bool IsPort(std::string_view text);
bool IsPort(const Json::Value& integer);

}  // namespace JsonValidator
