// Relative references made absolute, RFC 3986 section 5.2.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Json {

/// Length of the scheme that a text starts with, without the colon; 0 when it starts with none.
std::size_t SchemeLength(std::string_view text);

/// The URI that a reference means where the base is the URI of what it stands in; the base may be
/// empty.
std::string ResolveUri(std::string_view base, std::string_view reference);

}  // namespace Json
