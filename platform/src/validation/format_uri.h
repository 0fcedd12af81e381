// URIs, RFC 3986, and JSON Pointers, RFC 6901.
#pragma once

#include <cstddef>
#include <string_view>

namespace JsonValidator {

bool IsUri(std::string_view text);           ///< with its scheme
bool IsUriReference(std::string_view text);  ///< a URI, or one relative to another
/// Length of the scheme that a text starts with, without the colon; 0 when it starts with none.
std::size_t SchemeLength(std::string_view text);
bool IsJsonPointer(std::string_view text);

}  // namespace JsonValidator
