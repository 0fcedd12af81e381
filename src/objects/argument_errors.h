// Refusing what a caller asks of a member.
#pragma once

#include <string>
#include <string_view>

namespace TarnConfigStore {

/// Raises InvalidArgumentException 2000 with this message.
[[noreturn]] void ThrowArgument(const std::string& message);

/// Raises InvalidTypeException 2000 "Invalid type specified for: KEY".
[[noreturn]] void ThrowInvalidType(std::string_view key);

}  // namespace TarnConfigStore
