// Escapes that mean the same in a class of characters and outside, and classes.
#pragma once

#include "json_schema/ecma_reader.h"

#include <optional>
#include <string>

namespace JsonValidator::Ecma {

/// What an escape or a character stands for: one character or, where `set` is not empty, the
/// members of a class in PCRE2's words.
struct Characters {
  char32_t one = 0;
  std::string set;
};

constexpr bool IsSurrogate(char32_t character) {
  return character >= 0xD800 && character <= 0xDFFF;
}

/// The character at hand as it stands, or escaped. Raises a Fault for an escape that ECMA 262 does
/// not have.
Characters ReadCharacters(Reader& reader);

/// A character as PCRE2 takes it for itself, in a class and outside. A surrogate is in no text.
std::string Written(char32_t character);

/// The class that follows a "[", through its end.
/// \param members  gets how many members it has
std::string ReadClass(Reader& reader, std::size_t& members);

/// What stands between the braces of `\p{...}` in PCRE2's words; nothing for a property that ECMA
/// 262 does not have.
std::optional<std::string> PropertyOf(const std::string& written);

}  // namespace JsonValidator::Ecma
