// The one way in which failures are raised.
#pragma once

#include "tarnconfigstore/error_codes.h"
#include "tarnconfigstore/exceptions.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// printf into a string. Takes no further argument or one; without one the format is still
/// interpreted, so that "%%" in a code's template comes out as "%".
template <class... Argument>
std::string Format(const char* format, Argument... argument) {
  static_assert(sizeof...(argument) <= 1);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
  const int length = std::snprintf(nullptr, 0, format, argument...);
  if (length < 0) {
    return format;
  }
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(text.data(), text.size(), format, argument...);
#pragma GCC diagnostic pop
  text.pop_back();
  return text;
}

/// Raises a coded failure with the code's own message. Defined for InvalidArgumentException.
template <class Exception>
[[noreturn]] void ThrowException(CSErrorCodes code);

/// The same, with the text that fills the message's "%s". Defined for ConfigStoreException and
/// InvalidArgumentException.
template <class Exception>
[[noreturn]] void ThrowException(CSErrorCodes code, const std::string& argument);

/// The same, with the findings of a validation. Defined for ValidationException.
template <class Exception>
[[noreturn]] void ThrowException(CSErrorCodes code, std::vector<ErrorInfo>& errors);

/// Raises ConfigStoreException 2000 with this message.
[[noreturn]] void ThrowFailure(const std::string& message);

/// Raises InvalidArgumentException 2000 with this message.
[[noreturn]] void ThrowArgument(const std::string& message);

/// Raises InvalidTypeException 2000 "Invalid type specified for: KEY".
[[noreturn]] void ThrowInvalidType(std::string_view key);

/// Raises ConfigStoreException 1082 with this message.
[[noreturn]] void ThrowJsonAssertion(const std::string& message);

/// Raises ValidationException 2000 with this message and no findings.
[[noreturn]] void ThrowRefusal(const char* message);

/// Adds a finding whose text is the code's message, filled with the argument.
void AppendErrorInfo(const std::string& field, CSErrorCodes code, std::vector<ErrorInfo>& errors,
                     const std::string& argument);

}  // namespace TarnConfigStore
