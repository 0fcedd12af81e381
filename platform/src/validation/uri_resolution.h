// Relative references made absolute, RFC 3986 section 5.2.
#pragma once

#include <string>
#include <string_view>

namespace JsonValidator {

/// The URI that a reference means where the base is the URI of what it stands in; the base may be
/// empty.
std::string ResolveUri(std::string_view base, std::string_view reference);

}  // namespace JsonValidator
