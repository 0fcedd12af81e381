// Versions of types.
#pragma once

#include <string_view>

namespace TypeFiles {

/// True for numbers separated by dots: "1.0", "1.2.3", "7".
bool IsVersion(std::string_view text) noexcept;

}  // namespace TypeFiles
