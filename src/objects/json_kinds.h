// The kinds of value that callers read and write, and the JSON values that stand for them.
#pragma once

#include "json/json.h"

#include <string>
#include <string_view>

namespace TarnConfigStore {

// For each kind: Accepts tells whether a scalar read takes a JSON value, and whether a list whose
// first element it is takes another; Get reads it, raising the JSON assertion on anything else;
// Make stores one.
template <class T>
struct JsonKind;

template <>
struct JsonKind<int> {
  static bool Accepts(const Json::Value& value) { return value.IsInt(); }
  static int Get(const Json::Value& value) { return value.GetInt(); }
  static Json::Value Make(int value, Json::Allocator&) { return Json::Value(value); }
};

template <>
struct JsonKind<long long> {
  static bool Accepts(const Json::Value& value) { return value.IsInt64(); }
  static long long Get(const Json::Value& value) { return value.GetInt64(); }
  static Json::Value Make(long long value, Json::Allocator&) {
    return Json::Value(static_cast<std::int64_t>(value));
  }
};

template <>
struct JsonKind<long> : JsonKind<long long> {
  static long Get(const Json::Value& value) { return value.GetInt64(); }
};

// A number that was written as an integer is not a double, but reads as one inside a list.
template <>
struct JsonKind<double> {
  static bool Accepts(const Json::Value& value) { return value.IsDouble(); }
  static double Get(const Json::Value& value) { return value.GetDouble(); }
  static Json::Value Make(double value, Json::Allocator&) { return Json::Value(value); }
};

template <>
struct JsonKind<float> : JsonKind<double> {};

template <>
struct JsonKind<unsigned int> {
  static bool Accepts(const Json::Value& value) { return value.IsUint(); }
  static unsigned int Get(const Json::Value& value) { return value.GetUint(); }
  static Json::Value Make(unsigned int value, Json::Allocator&) { return Json::Value(value); }
};

// A larger number is read as its low bits. That is the contract of these two kinds.
template <>
struct JsonKind<unsigned short> : JsonKind<unsigned int> {
  static unsigned short Get(const Json::Value& value) {
    return static_cast<unsigned short>(value.GetUint());
  }
};

template <>
struct JsonKind<unsigned char> : JsonKind<unsigned int> {
  static unsigned char Get(const Json::Value& value) {
    return static_cast<unsigned char>(value.GetUint());
  }
};

template <>
struct JsonKind<unsigned long long> {
  static bool Accepts(const Json::Value& value) { return value.IsUint64(); }
  static unsigned long long Get(const Json::Value& value) { return value.GetUint64(); }
  static Json::Value Make(unsigned long long value, Json::Allocator&) {
    return Json::Value(static_cast<std::uint64_t>(value));
  }
};

template <>
struct JsonKind<bool> {
  static bool Accepts(const Json::Value& value) { return value.IsBool(); }
  static bool Get(const Json::Value& value) { return value.GetBool(); }
  static Json::Value Make(bool value, Json::Allocator&) { return Json::Value(value); }
};

template <>
struct JsonKind<std::string_view> {
  static bool Accepts(const Json::Value& value) { return value.IsString(); }
  static std::string_view Get(const Json::Value& value) {
    const char* text = value.GetString();  // asserts before the length is asked, which does not
    return {text, value.GetStringLength()};
  }
  static Json::Value Make(std::string_view value, Json::Allocator& allocator) {
    return Json::Copy(value, allocator);
  }
};

template <>
struct JsonKind<std::string> : JsonKind<std::string_view> {
  static std::string Get(const Json::Value& value) {
    return std::string(JsonKind<std::string_view>::Get(value));
  }
};

}  // namespace TarnConfigStore
