// Escapes in JSON text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Json {

/// Where a text that the reader has taken for JSON escapes the second half of a surrogate pair
/// without the first; npos where it does not. The reader makes of it what is not UTF-8. (Of a first
/// half without the second it says so itself.)
std::size_t FindLoneSurrogate(std::string_view text) noexcept;

/// What a JSON string, its quotes included, says by its escapes. False where it is none.
bool ReadEscapes(std::string_view quoted, std::string& text);

}  // namespace Json
