// URIs, RFC 3986, and JSON Pointers, RFC 6901.
#pragma once

#include <cstddef>
#include <string_view>

namespace JsonValidator {

bool IsUri(std::string_view text);           ///< with its scheme
bool IsUriReference(std::string_view text);  ///< a URI, or one relative to another
bool IsJsonPointer(std::string_view text);

}  // namespace JsonValidator
