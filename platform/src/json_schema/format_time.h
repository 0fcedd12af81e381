// Dates and times, RFC 3339.
#pragma once

#include <string_view>

namespace JsonValidator {

bool IsDate(std::string_view text);
bool IsTime(std::string_view text);  ///< with its offset from UTC
bool IsDateTime(std::string_view text);

}  // namespace JsonValidator
