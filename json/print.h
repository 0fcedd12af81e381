// JSON text for people.
#pragma once

#include "json/json.h"

#include <string>

namespace Json {

/// One line without blanks, or a line for each member and element, indented by two blanks a level.
enum class Layout { ONE_LINE, INDENTED };

/// What becomes of strings that are not UTF-8, as names of files can be.
enum class BadText { REFUSED, REPAIRED };

/// The value as text for people, members in their order: the digits are those that Serialize writes,
/// with an exponent only where a person would use one; characters that a terminal would obey, or that
/// let a line look like another one, are escaped. False, with an empty text, where Serialize
/// says so; with REPAIRED every byte of a string that is not UTF-8 becomes U+FFFD instead.
bool Print(const Value& value, Layout layout, BadText badText, std::string& text);

}  // namespace Json
