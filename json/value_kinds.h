// Sets of JSON types, as a schema allows them.
#pragma once

#include "json/json.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Json {

/// A set of kinds of JSON value. JSON Schema's "number" is the integers and the fractions.
class ValueKinds {
 public:
  static constexpr std::uint8_t kNull = 1;
  static constexpr std::uint8_t kBoolean = 2;
  static constexpr std::uint8_t kInteger = 4;
  static constexpr std::uint8_t kFraction = 8;
  static constexpr std::uint8_t kString = 16;
  static constexpr std::uint8_t kArray = 32;
  static constexpr std::uint8_t kObject = 64;
  static constexpr std::uint8_t kNumber = kInteger | kFraction;
  static constexpr std::uint8_t kAll = 127;

  constexpr explicit ValueKinds(std::uint8_t bits) : bits_(bits) {}

  /// The set for one of JSON Schema's type names; empty for any other text.
  static ValueKinds Named(std::string_view typeName);
  /// The one kind that a value is of.
  static ValueKinds Of(const Value& value);

  constexpr bool Holds(ValueKinds other) const { return (bits_ & other.bits_) == other.bits_; }
  constexpr bool Holds(std::uint8_t kind) const { return (bits_ & kind) == kind; }
  constexpr bool Meets(std::uint8_t kinds) const { return (bits_ & kinds) != 0; }
  constexpr ValueKinds operator&(ValueKinds other) const {
    return ValueKinds(static_cast<std::uint8_t>(bits_ & other.bits_));
  }
  constexpr ValueKinds operator|(ValueKinds other) const {
    return ValueKinds(static_cast<std::uint8_t>(bits_ | other.bits_));
  }
  friend constexpr bool operator==(ValueKinds, ValueKinds) = default;

  /// JSON Schema's names, as "integer or string".
  std::string Describe() const;

 private:
  std::uint8_t bits_;
};

}  // namespace Json
