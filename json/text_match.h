// Holding a text against a value without making another value of it.
#pragma once

#include "json/json.h"

#include <string_view>

namespace Json {

enum class TextMatch {
  SAME,     ///< the text is sound, and holds what is Equal to the value
  OTHER,    ///< it does not
  UNKNOWN,  ///< it has to be parsed to know: members stand in another order, strings have escapes
};

/// Reads on as long as text and value go hand in hand, and stops at the first difference.
/// \param value  as Parse makes it from OUTSIDE: no object names a member twice
TextMatch MatchText(std::string_view text, const Value& value);

}  // namespace Json
