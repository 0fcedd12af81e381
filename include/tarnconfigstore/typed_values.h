// What StoreObject::Get and Set read and write: every width of integer, floating point, texts,
// enumerations, and lists of them. Inline, over the functions of StoreObject.
//
//     const std::optional<std::uint16_t> mtu = edge->Get<std::uint16_t>("mtu");
//     edge->Set("uplinks", std::vector<std::string>{"nic0", "nic1"});
//
// What holds for all of them, besides what StoreObject says:
// - A value that does not fit is never cut. A read throws InvalidTypeException 2000 that names the
//   member, and the element of a list as MEMBER/INDEX; a write throws InvalidArgumentException 2000
//   that names it, and leaves the member as it was. Neither says the value, which may be a secret.
// - Integers are those of long long. An unsigned 64-bit type also takes larger ones, but not in
//   lists, and reads them from a ConfigStoreObject only.
// - float rounds to the nearest number that it has; double takes the integers that it holds exactly.
//   Numbers that are not finite are refused.
// - A write takes the place of a member that holds null.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/exceptions.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace TarnConfigStore {

/// One value of an enumeration, and the text that stands for it in the store. An enumeration is read
/// and written by its texts once a function beside it lists them:
///
///     enum class Discovery { OFF, LISTEN };
///     constexpr std::array<EnumText<Discovery>, 2> TextsOf(Discovery) {
///       return {{{Discovery::OFF, "off"}, {Discovery::LISTEN, "listen"}}};
///     }
///
/// A text that is not listed does not fit, nor does a value that is not.
template <class Enum>
struct EnumText {
  Enum value;
  std::string_view text;
};

namespace Internal {

template <class T, class... Others>
constexpr bool kIsOneOf = (std::is_same_v<T, Others> || ...);

/// The integers: neither bool nor characters.
template <class T>
constexpr bool kIsInteger = std::is_integral_v<T> && sizeof(T) <= sizeof(long long) &&
                            !kIsOneOf<T, bool, char, wchar_t, char16_t, char32_t>;

template <class T>
constexpr bool kIsFloat = kIsOneOf<T, float, double>;

/// Integers of which some are beyond long long.
template <class T>
constexpr bool kIsWide = kIsInteger<T>&& std::is_unsigned_v<T> && sizeof(T) == sizeof(long long);

[[noreturn]] inline void RaiseUnfitRead(const std::string& place) {
  throw InvalidTypeException(CS_GENERIC,
                             ("Value does not fit the type asked for: " + place).c_str());
}
[[noreturn]] inline void RaiseUnfitWrite(const std::string& place) {
  throw InvalidArgumentException(CS_GENERIC, ("Value does not fit the member: " + place).c_str());
}

inline std::string PlaceIn(const char* key, std::size_t index) {
  return std::string(key) + "/" + std::to_string(index);
}

template <class To, class From>
constexpr bool IntegerFits(From value) {
  if constexpr (std::is_signed_v<From>) {
    if (value < 0) {
      return std::is_signed_v<To> && static_cast<long long>(value) >=
                                         static_cast<long long>(std::numeric_limits<To>::min());
    }
  }
  return static_cast<unsigned long long>(value) <=
         static_cast<unsigned long long>(std::numeric_limits<To>::max());
}

/// To: an integer or floating point. An integer becomes a floating-point number that equals it.
template <class To, class From>
bool NumberFits(From value) {
  if constexpr (kIsInteger<To>) {
    return IntegerFits<To>(value);
  } else if constexpr (kIsInteger<From>) {
    // One above the largest value is a power of two, which every floating-point type has.
    constexpr From half = std::numeric_limits<From>::max() / 2 + 1;
    const To converted = static_cast<To>(value);
    return converted < 2 * static_cast<To>(half) && static_cast<From>(converted) == value;
  } else {
    return std::isfinite(value) && std::fabs(static_cast<double>(value)) <=
                                       static_cast<double>(std::numeric_limits<To>::max());
  }
}

/// The integer that a member of the object holds; nothing for anything else and for the default.
template <class Integer>
std::optional<Integer> OwnInteger(const ConfigStoreObject& object, const char* key) {
  if (key == nullptr || *key == '\0') {
    return std::nullopt;  // for the typed read to refuse
  }
  std::string pointer = "/";
  for (const char character : std::string_view(key)) {
    if (character == '~' || character == '/') {
      pointer += character == '~' ? "~0" : "~1";
    } else {
      pointer += character;
    }
  }
  const std::optional<std::string> text = object.GetPath(pointer);
  Integer number = 0;
  if (!text) {
    return std::nullopt;
  }
  const char* end = text->data() + text->size();
  const auto [rest, error] = std::from_chars(text->data(), end, number);
  return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

/// SetValue adds a second member beside one that holds null, which reads go on to find.
template <class Read, class Stored>
void Put(StoreObject& object, const char* key, const Stored& value) {
  const bool wasThere = object.CheckKey(key);
  object.SetValue(key, value);
  Read stored{};
  if (wasThere && object.GetValue(key, &stored) != 1) {
    while (object.CheckKey(key)) {
      object.Remove(key);
    }
    object.SetValue(key, value);
  }
}

}  // namespace Internal

template <>
struct TypedValue<bool> {
  using Stored = bool;
  static std::optional<bool> Read(const StoreObject& object, const char* key) {
    bool value = false;
    return object.GetValue(key, &value) == 0 ? std::nullopt : std::optional(value);
  }
  static void Write(StoreObject& object, const char* key, bool value) {
    Internal::Put<bool>(object, key, value);
  }
  static std::optional<bool> FromStored(bool value) { return value; }
  static std::optional<bool> ToStored(bool value) { return value; }
};

template <>
struct TypedValue<std::string> {
  using Stored = std::string;
  static std::optional<std::string> Read(const StoreObject& object, const char* key) {
    std::string value;
    return object.GetValue(key, &value) == 0 ? std::nullopt : std::optional(std::move(value));
  }
  static void Write(StoreObject& object, const char* key, std::string_view value) {
    Internal::Put<std::string>(object, key, value);
  }
  static std::optional<std::string> FromStored(std::string value) { return value; }
  static std::optional<std::string> ToStored(std::string_view value) { return std::string(value); }
};

/// Written only: a read has to own its text, as std::string does.
template <>
struct TypedValue<std::string_view> {
  using Stored = std::string;
  static void Write(StoreObject& object, const char* key, std::string_view value) {
    TypedValue<std::string>::Write(object, key, value);
  }
  static std::optional<std::string> ToStored(std::string_view value) { return std::string(value); }
};

template <>
struct TypedValue<const char*> {
  static void Write(StoreObject& object, const char* key, const char* value) {
    Internal::Put<std::string>(object, key, value);
  }
};
template <>
struct TypedValue<char*> : TypedValue<const char*> {};

template <class T>
struct TypedValue<T, std::enable_if_t<Internal::kIsInteger<T>>> {
  using Stored = long long;
  template <class Object>
  static std::optional<T> Read(const Object& object, const char* key) {
    if constexpr (Internal::kIsWide<T> && std::is_base_of_v<ConfigStoreObject, Object>) {
      if (const auto own = Internal::OwnInteger<T>(object, key)) {
        return own;
      }
    }
    long long stored = 0;
    if (object.GetValue(key, &stored) == 0) {
      return std::nullopt;
    }
    const std::optional<T> value = FromStored(stored);
    if (!value) {
      Internal::RaiseUnfitRead(key);
    }
    return value;
  }
  static void Write(StoreObject& object, const char* key, T value) {
    if (const auto stored = ToStored(value)) {
      Internal::Put<long long>(object, key, *stored);
    } else {
      Internal::Put<unsigned long long>(object, key, static_cast<unsigned long long>(value));
    }
  }
  static std::optional<T> FromStored(long long value) {
    return Internal::IntegerFits<T>(value) ? std::optional(static_cast<T>(value)) : std::nullopt;
  }
  static std::optional<long long> ToStored(T value) {
    return Internal::IntegerFits<long long>(value) ? std::optional(static_cast<long long>(value))
                                                   : std::nullopt;
  }
};

template <class T>
struct TypedValue<T, std::enable_if_t<Internal::kIsFloat<T>>> {
  using Stored = double;
  template <class Object>
  static std::optional<T> Read(const Object& object, const char* key) {
    if constexpr (std::is_base_of_v<ConfigStoreObject, Object>) {
      if (const auto own = Internal::OwnInteger<long long>(object, key)) {
        return Fitting(*own, key);
      }
    }
    double stored = 0;
    if (object.GetValue(key, &stored) == 0) {
      return std::nullopt;
    }
    return Fitting(stored, key);
  }
  static void Write(StoreObject& object, const char* key, T value) {
    const auto stored = ToStored(value);
    if (!stored) {
      Internal::RaiseUnfitWrite(key == nullptr ? "" : key);
    }
    Internal::Put<double>(object, key, *stored);
  }
  static std::optional<T> FromStored(double value) {
    return Internal::NumberFits<T>(value) ? std::optional(static_cast<T>(value)) : std::nullopt;
  }
  static std::optional<double> ToStored(T value) {
    return std::isfinite(value) ? std::optional(static_cast<double>(value)) : std::nullopt;
  }

 private:
  template <class Number>
  static T Fitting(Number number, const char* key) {
    if (!Internal::NumberFits<T>(number)) {
      Internal::RaiseUnfitRead(key);
    }
    return static_cast<T>(number);
  }
};

/// Enumerations that TextsOf lists; see EnumText.
template <class T>
struct TypedValue<T, std::enable_if_t<std::is_enum_v<T>, std::void_t<decltype(TextsOf(T{}))>>> {
  using Stored = std::string;
  static std::optional<T> Read(const StoreObject& object, const char* key) {
    const auto text = TypedValue<std::string>::Read(object, key);
    if (!text) {
      return std::nullopt;
    }
    const std::optional<T> value = FromStored(*text);
    if (!value) {
      Internal::RaiseUnfitRead(key);
    }
    return value;
  }
  static void Write(StoreObject& object, const char* key, T value) {
    const auto text = ToStored(value);
    if (!text) {
      Internal::RaiseUnfitWrite(key == nullptr ? "" : key);
    }
    TypedValue<std::string>::Write(object, key, *text);
  }
  static std::optional<T> FromStored(std::string_view text) {
    for (const auto& known : TextsOf(T{})) {
      if (known.text == text) {
        return known.value;
      }
    }
    return std::nullopt;
  }
  static std::optional<std::string> ToStored(T value) {
    for (const auto& known : TextsOf(value)) {
      if (known.value == value) {
        return std::string(known.text);
      }
    }
    return std::nullopt;
  }
};

template <class T, class Allocator>
struct TypedValue<std::vector<T, Allocator>> {
  using Element = TypedValue<T>;
  using Stored = std::vector<typename Element::Stored>;

  static std::optional<std::vector<T, Allocator>> Read(const StoreObject& object, const char* key) {
    Stored stored;
    if (ReadStored(object, key, stored) == 0) {
      return std::nullopt;
    }
    std::vector<T, Allocator> values;
    values.reserve(stored.size());
    for (std::size_t i = 0; i < stored.size(); ++i) {
      auto value = Element::FromStored(stored[i]);
      if (!value) {
        Internal::RaiseUnfitRead(Internal::PlaceIn(key, i));
      }
      values.push_back(std::move(*value));
    }
    return values;
  }
  static void Write(StoreObject& object, const char* key, const std::vector<T, Allocator>& values) {
    Stored stored;
    stored.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
      auto element = Element::ToStored(values[i]);
      if (!element) {
        Internal::RaiseUnfitWrite(Internal::PlaceIn(key == nullptr ? "" : key, i));
      }
      stored.push_back(std::move(*element));
    }
    if (key != nullptr && *key != '\0') {  // for SetValue to refuse
      while (object.CheckKey(key)) {
        object.Remove(key);
      }
    }
    object.SetValue(key, stored);
  }

 private:
  // What the library says of an element of another type does not name the member.
  static int ReadStored(const StoreObject& object, const char* key, Stored& stored) {
    object.CheckKey(key);  // says the same of data that are no object
    try {
      return object.GetValue(key, &stored);
    } catch (const ConfigStoreException& error) {
      if (error.GetErrorCode() != CS_JSON_ASSERTION) {
        throw;
      }
    }
    Internal::RaiseUnfitRead(Internal::PlaceIn(key, stored.size()));
  }
};

}  // namespace TarnConfigStore
