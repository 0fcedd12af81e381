// What YAML takes an unquoted scalar for.
#pragma once

#include <string>
#include <string_view>

namespace tarnctl {

/// A plain scalar by YAML 1.2's core schema (https://yaml.org/spec/1.2.2/#103-core-schema).
struct CoreScalar {
  enum class Kind {
    TEXT,
    NULL_VALUE,
    TRUE_VALUE,
    FALSE_VALUE,
    NUMBER,
    LONG_INTEGER,  ///< hexadecimal or octal, of more than 64 bits
    NOT_FINITE,    ///< infinity, or no number: JSON has neither
  };

  Kind kind = Kind::TEXT;
  std::string number = {};  ///< of NUMBER: with the same digits, by JSON's grammar
};

CoreScalar ReadCoreScalar(std::string_view text);

/// True for a text that every YAML reader takes for the same text when it stands plain, as a value or
/// as a name, readers of YAML 1.1 among them. Not for all such texts: those with characters that mean
/// something somewhere are not told apart.
bool IsPlainEverywhere(std::string_view text);

}  // namespace tarnctl
